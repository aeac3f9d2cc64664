// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/run_time_class.h"

#include "tests/phonomark/module_fixture.h"

#include <array>
#include <malloc.h>
#include <memory>

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

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // whose allocators count nothing; one finds leaks

TEST(RunTimeClassTest, AClassThatThrowsAtBirthGivesItsBlockBack) {
    struct Large : Thrower {
        std::array<char, std::size_t{64} << 20> bytes; // a mapping of its own, counted apart
    };
    const std::size_t before = mallinfo2().hblkhd;
    const std::unique_ptr<void, void (*)(void*)> block(mxHeapAlloc(sizeof(Large)), &mxHeapFree);
    const std::size_t during = mallinfo2().hblkhd;
    ASSERT_GE(during, before + sizeof(Large)) << "the allocator counts";
    EXPECT_EQ(makeOnHostHeap<Large>(), nullptr);
    EXPECT_EQ(mallinfo2().hblkhd, during);
}

#endif

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
