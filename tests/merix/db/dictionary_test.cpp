// SPDX-License-Identifier: MIT
#include "host/db/dictionary.h"

#include "merix/db/access.h"
#include "merix/db/dwg_filer.h"
#include "tests/merix/db/drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

class DictionaryTest : public testing::Test {
protected:
    DictionaryTest() { drawing.database.getNamedObjectsDictionary(root, Mx::kForWrite); }
    ~DictionaryTest() override { root->close(); }

    MxDbObjectId set(MxDbDictionary& dictionary, const wchar_t* key) {
        auto* record = new MxDbXrecord;
        MxDbObjectId id;
        EXPECT_EQ(dictionary.setAt(key, record, id), Mx::eOk);
        record->close();
        return id;
    }

    Drawing drawing;
    MxDbDictionary* root = nullptr;
};

TEST_F(DictionaryTest, KeysAreFoundWithoutRegardToCaseAndKeepTheirForm) {
    const MxDbObjectId id = set(*root, L"Phono_Mark");
    MxDbObjectId found;
    EXPECT_EQ(root->getAt(L"PHONO_MARK", found), Mx::eOk);
    EXPECT_EQ(found, id);
    EXPECT_EQ(root->entries().back().first, L"Phono_Mark");
    EXPECT_EQ(drawing.at<MxDbXrecord>(id).ownerId(), root->objectId());
}

TEST_F(DictionaryTest, AMissingKeyIsStatus22) {
    MxDbObjectId found;
    EXPECT_EQ(root->getAt(L"NONE", found), 22);
    EXPECT_TRUE(found.isNull());
    EXPECT_EQ(root->getAt(nullptr, found), Mx::eKeyNotFound);
}

TEST_F(DictionaryTest, EntriesStandInTheOrderInWhichTheyWereAdded) {
    const std::size_t before = root->entries().size();
    set(*root, L"ZULU");
    set(*root, L"ALPHA");
    const auto entries = root->entries();
    ASSERT_EQ(entries.size(), before + 2);
    EXPECT_EQ(entries[before].first, L"ZULU");
    EXPECT_EQ(entries[before + 1].first, L"ALPHA");
}

TEST_F(DictionaryTest, AnErasedEntryIsNotFoundAndItsKeyIsFree) {
    const MxDbObjectId first = set(*root, L"KEY");
    drawing.erase(first);
    MxDbObjectId found;
    EXPECT_EQ(root->getAt(L"KEY", found), Mx::eKeyNotFound);
    const MxDbObjectId second = set(*root, L"KEY");
    EXPECT_EQ(root->getAt(L"KEY", found), Mx::eOk);
    EXPECT_EQ(found, second);
}

TEST_F(DictionaryTest, ReplacingAnEntryErasesTheObjectThatStoodThere) {
    const MxDbObjectId first = set(*root, L"KEY");
    set(*root, L"key");
    EXPECT_TRUE(drawing.at<MxDbXrecord>(first).isErased());
}

TEST_F(DictionaryTest, WrongArgumentsAreRefused) {
    MxDbObjectId id;
    EXPECT_EQ(root->setAt(L"KEY", nullptr, id), Mx::eInvalidInput);
    auto record = std::make_unique<MxDbXrecord>();
    EXPECT_EQ(root->setAt(L"", record.get(), id), Mx::eInvalidInput);
    MxDbDictionary homeless;
    EXPECT_EQ(homeless.setAt(L"KEY", record.get(), id), Mx::eNoDatabase);
    const MxDbObjectId taken = set(*root, L"KEY");
    EXPECT_EQ(root->setAt(L"OTHER", &drawing.at<MxDbXrecord>(taken), id), Mx::eAlreadyInDatabase);
}

TEST_F(DictionaryTest, ErasingADictionaryTakesItsEntriesAlongAndBringsJustThemBack) {
    auto* inner = new MxDbDictionary;
    MxDbObjectId id;
    root->setAt(L"INNER", inner, id);
    const MxDbObjectId kept = set(*inner, L"KEPT"), gone = set(*inner, L"GONE");
    inner->close();
    drawing.erase(gone);
    drawing.erase(id);
    EXPECT_TRUE(drawing.at<MxDbXrecord>(kept).isErased());
    drawing.erase(id, false);
    EXPECT_FALSE(drawing.at<MxDbXrecord>(kept).isErased());
    EXPECT_TRUE(drawing.at<MxDbXrecord>(gone).isErased());
}

TEST_F(DictionaryTest, NestingWithoutEndIsErasedAsFarAsTheStackGoesAndComesBack) {
    constexpr int kDeep = 100000;
    const MxDbObjectId top(drawing.imp.adopt(new MxDbDictionary, {}, {}));
    std::vector<MxDbObjectId> all{top};
    for (int i = 0; i < kDeep; ++i) {
        const MxDbObjectId inner(drawing.imp.adopt(new MxDbDictionary, {}, all.back()));
        auto& outer = drawing.at<MxDbDictionary>(all.back());
        if (i % 2 == 0) {
            outer.data().extensionDictionary = inner;
        } else {
            // A reader's way: the entry of an object that is there already.
            merix::db::DwgWriter writer(MxDbFilerType::kFile, &drawing.database);
            writer.writeSoftPointerId({});
            writer.writeUInt32(0);
            writer.writeBool(false);
            writer.writeInt16(1);
            writer.writeUInt32(1);
            writer.writeString(L"INNER");
            writer.writeSoftPointerId(inner);
            ASSERT_EQ(merix::db::readDwgImage(outer, writer.take(), MxDbFilerType::kFile), Mx::eOk);
        }
        all.push_back(inner);
    }
    const auto erased = [&] {
        return std::count_if(all.begin(), all.end(),
                             [&](const MxDbObjectId& id) { return drawing.at<MxDbObject>(id).isErased(); });
    };
    drawing.imp.undo.begin(L"Erase");
    EXPECT_EQ(drawing.erase(top), Mx::eOk);
    drawing.imp.undo.end();
    EXPECT_GT(erased(), 100);
    EXPECT_LT(erased(), 1000);
    ASSERT_TRUE(drawing.imp.undo.undo());
    EXPECT_EQ(erased(), 0);
}

TEST_F(DictionaryTest, TheBinaryFormKeepsKeysAndOrder) {
    set(*root, L"B");
    set(*root, L"A");
    const std::string image = merix::db::dwgImage(*root, MxDbFilerType::kFile);
    auto* copy = new MxDbDictionary;
    drawing.imp.adopt(copy, {}, {});
    EXPECT_EQ(merix::db::readDwgImage(*copy, image, MxDbFilerType::kFile), Mx::eOk);
    const merix::db::ReadAccess readable(*copy);
    EXPECT_EQ(copy->entries(), root->entries());
}

} // namespace
