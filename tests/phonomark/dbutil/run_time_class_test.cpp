// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/run_time_class.h"

#include "tests/phonomark/module_fixture.h"

namespace {

class Watcher : public MxDbObjectReactor {
public:
    static MxRxObject* makeDefault() { return makeOnHostHeap<Watcher>(); }
};

class Thrower : public MxRxObject {
public:
    Thrower() { throw 1; }
};

} // namespace

TEST(RunTimeClassTest, AClassThatThrowsAtBirthGivesNoObject) {
    EXPECT_EQ(makeOnHostHeap<Thrower>(), nullptr);
}

TEST(RunTimeClassTest, RegisteringTwiceGivesTheSameClass) {
    MxRxClass* known = nullptr;
    MxRxClass* made = registerUnfiledClass<Watcher>(known, L"TestWatcher", MxDbObjectReactor::desc());
    EXPECT_EQ(made, known);
    EXPECT_EQ(registerUnfiledClass<Watcher>(known, L"TestWatcher", MxDbObjectReactor::desc()), made);
    deleteMxRxClass(made);
}

TEST(RunTimeClassDeathTest, AnotherClassOfTheSameNameStopsTheHost) {
    MxRxClass* other = newMxRxClass(L"TestWatcher", MxDbObjectReactor::desc()->name(), 1, &Watcher::makeDefault);
    MxRxClass* known = nullptr;
    EXPECT_DEATH(registerUnfiledClass<Watcher>(known, L"TestWatcher", MxDbObjectReactor::desc()), "Class mismatch");
    known = MxDbObjectReactor::desc(); // known before, but the name means another class by now
    EXPECT_DEATH(registerUnfiledClass<Watcher>(known, L"TestWatcher", MxDbObjectReactor::desc()), "Class mismatch");
    deleteMxRxClass(other);
}
