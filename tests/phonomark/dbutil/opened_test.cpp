// SPDX-License-Identifier: MIT
#include "phonomark/dbutil/opened.h"

#include "tests/phonomark/module_fixture.h"

namespace {

class OpenedTest : public ModuleTest {
protected:
    static bool isClosed(MxDbObjectId id) { return bool(Opened<MxDbPhonomark>(id, Mx::kForWrite)); }
};

} // namespace

TEST_F(OpenedTest, TheObjectIsOpenAsLongAsItIsHeldAndNoLonger) {
    const MxDbObjectId id = addNote();
    {
        Opened<MxDbPhonomark> first(id, Mx::kForWrite);
        ASSERT_TRUE(first);
        EXPECT_EQ(first->objectId(), id);
        const Opened<MxDbPhonomark> second(std::move(first));
        EXPECT_TRUE(second);
        EXPECT_FALSE(isClosed(id));
        EXPECT_EQ(Opened<MxDbPhonomark>(id, Mx::kForRead).status(), Mx::eOpenForWrite);
    }
    EXPECT_TRUE(isClosed(id));
}

TEST_F(OpenedTest, ItIsClosedOnce) {
    const MxDbObjectId id = addNote();
    Opened<MxDbPhonomark> open(id, Mx::kForWrite);
    EXPECT_EQ(open.close(), Mx::eOk);
    EXPECT_FALSE(open);
    const Opened<MxDbPhonomark> reader(id, Mx::kForRead);
    EXPECT_EQ(open.close(), Mx::eNotOpen);
    EXPECT_FALSE(isClosed(id)) << "what somebody else opened is left to him";
}

TEST_F(OpenedTest, SomebodyWhoIsToldOfTheClosingAndThrowsIsNotInTheWay) {
    class Failing : public MxDbObjectReactor {
    public:
        void modified(const MxDbObject*) override { throw std::bad_alloc(); }
    } failing;
    const MxDbObjectId id = addNote();
    Opened<MxDbPhonomark>(id, Mx::kForRead)->addReactor(&failing);
    {
        const Opened<MxDbPhonomark> open(id, Mx::kForWrite);
        open->assertWriteEnabled();
    }
    EXPECT_TRUE(isClosed(id));
    Opened<MxDbPhonomark> open(id, Mx::kForWrite);
    open->assertWriteEnabled();
    EXPECT_EQ(open.close(), Mx::eOk);
    EXPECT_TRUE(isClosed(id));
    Opened<MxDbPhonomark>(id, Mx::kForRead)->removeReactor(&failing);
}
