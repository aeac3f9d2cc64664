// SPDX-License-Identifier: MIT
#include "merix/rx/class_registry.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

class Sample : public MxRxObject {
public:
    MxRxClass* isA() const override { return mxrxFindMxRxClass(L"TestSample"); }
};

MxRxObject* makeSample() {
    return new Sample;
}

MxRxClass* newSample(const wchar_t* name = L"TestSample", const wchar_t* parent = L"MxRxObject") {
    return newMxRxClass(name, parent, 33, 55, 1, makeSample, L"TESTSAMPLE", L"App|Product");
}

TEST(ClassRegistry, ADescriptorTellsWhatItWasRegisteredWith) {
    MxRxClass* aClass = newSample();
    ASSERT_NE(aClass, nullptr);
    EXPECT_STREQ(aClass->name(), L"TestSample");
    EXPECT_STREQ(aClass->dxfName(), L"TESTSAMPLE");
    EXPECT_STREQ(aClass->appName(), L"App|Product");
    EXPECT_EQ(aClass->dwgVersion(), 33);
    EXPECT_EQ(aClass->maintenanceVersion(), 55);
    EXPECT_EQ(aClass->proxyFlags(), 1);
    EXPECT_EQ(aClass->myParent(), MxRxObject::desc());
    EXPECT_EQ(mxrxFindMxRxClass(L"TestSample"), aClass);
    deleteMxRxClass(aClass);
    EXPECT_EQ(mxrxFindMxRxClass(L"TestSample"), nullptr);
}

TEST(ClassRegistry, ASecondRegistrationOfANameGivesNull) {
    MxRxClass* aClass = newSample();
    EXPECT_EQ(newSample(), nullptr);
    EXPECT_EQ(mxrxFindMxRxClass(L"TestSample"), aClass);
    deleteMxRxClass(aClass);
}

TEST(ClassRegistry, ClassesNotFiledHaveNoDxfName) {
    MxRxClass* aClass = newMxRxClass(L"TestReactor", L"MxRxObject", 0, nullptr);
    EXPECT_STREQ(aClass->dxfName(), L"");
    EXPECT_EQ(aClass->create(), nullptr);
    deleteMxRxClass(aClass);
}

TEST(ClassRegistry, AParentRegisteredLaterIsFoundWhenTheHierarchyIsBuilt) {
    MxRxClass* child = newMxRxClass(L"TestChild", L"TestSample", 0, nullptr);
    EXPECT_EQ(child->myParent(), nullptr);
    MxRxClass* parent = newSample();
    mxrxBuildClassHierarchy();
    EXPECT_EQ(child->myParent(), parent);
    EXPECT_TRUE(child->isDerivedFrom(parent));
    EXPECT_TRUE(child->isDerivedFrom(MxRxObject::desc()));
    EXPECT_FALSE(parent->isDerivedFrom(child));
    EXPECT_FALSE(child->isDerivedFrom(nullptr));
    deleteMxRxClass(parent);
    EXPECT_EQ(child->myParent(), nullptr);
    deleteMxRxClass(child);
}

TEST(ClassRegistry, AnObjectIsOfItsClassAndOfItsAncestors) {
    MxRxClass* aClass = newSample();
    const std::unique_ptr<MxRxObject> made(aClass->create());
    EXPECT_TRUE(made->isKindOf(aClass));
    EXPECT_TRUE(made->isKindOf(MxRxObject::desc()));
    EXPECT_FALSE(made->isKindOf(nullptr));
    deleteMxRxClass(aClass);
}

TEST(ClassRegistry, TheDxfNameFindsTheClassRegisteredLast) {
    MxRxClass* first = newSample();
    MxRxClass* second = newSample(L"TestSample2");
    EXPECT_EQ(merix::rx::findClassByDxfName(L"testsample"), second);
    deleteMxRxClass(second);
    EXPECT_EQ(merix::rx::findClassByDxfName(L"TESTSAMPLE"), first);
    deleteMxRxClass(first);
    EXPECT_EQ(merix::rx::findClassByDxfName(L"TESTSAMPLE"), nullptr);
}

class CountingListener final : public merix::rx::ClassListener {
public:
    void classAboutToBeDeleted(const MxRxClass& aClass) override { deleted += aClass.name(); }
    void hierarchyBuilt() override { ++built; }
    std::wstring deleted;
    int built = 0;
};

TEST(ClassRegistry, ListenersAreToldOfTheHierarchyAndOfClassesThatGo) {
    static CountingListener listener;
    merix::rx::addClassListener(&listener);
    MxRxClass* aClass = newSample();
    mxrxBuildClassHierarchy();
    EXPECT_EQ(listener.built, 1);
    deleteMxRxClass(aClass);
    deleteMxRxClass(nullptr);
    EXPECT_EQ(listener.deleted, L"TestSample");
}

TEST(ClassRegistryDeathTest, AbortPrintsItsMessage) {
    EXPECT_DEATH(mxrx_abort(L"Class mismatch"), "merix: Class mismatch");
}

} // namespace
