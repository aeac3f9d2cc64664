// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/documents.h"

#include "tests/phonomark/module_fixture.h"

using merix::ap::DocManager;
using DocumentsTest = ModuleTest;

TEST_F(DocumentsTest, OnlyOpenDocumentsAreValid) {
    merix::ap::Document* second = DocManager::instance().create();
    EXPECT_TRUE(IsValidDocument(&document()));
    EXPECT_TRUE(IsValidDocument(second));
    EXPECT_FALSE(IsValidDocument(nullptr));
    DocManager::instance().close(*second);
    EXPECT_FALSE(IsValidDocument(second));
}

TEST_F(DocumentsTest, EveryCommandCountsAsDragging) {
    EXPECT_TRUE(IsSeriesOfDragcmds(L"MOVE"));
    EXPECT_TRUE(IsSeriesOfDragcmds(L"REGEN"));
    EXPECT_TRUE(IsSeriesOfDragcmds(nullptr));
}

TEST_F(DocumentsTest, ALockIsGivenBackUnlessItIsLeft) {
    {
        const DocumentLock lock(&document(), L"First", 298);
        EXPECT_TRUE(lock.isHeld());
        EXPECT_FALSE(DocumentLock(&document(), L"Second", 298, false).isHeld());
    }
    {
        DocumentLock lock(&document(), L"Second", 298, false);
        EXPECT_TRUE(lock.isHeld());
        lock.leaveLocked();
    }
    EXPECT_FALSE(DocumentLock(&document(), L"Third", 298, false).isHeld());
    DocManager::instance().unlockDocument(&document());
}

TEST_F(DocumentsTest, WithoutADocumentThereIsNoLock) {
    EXPECT_FALSE(DocumentLock(nullptr, L"First", 298).isHeld());
}
