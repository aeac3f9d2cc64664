// SPDX-License-Identifier: MIT
// What the host calls, with somebody at work inside who throws.
#include "phonomark/dbutil/border.h"

#include "merix/db/dwg_filer.h"
#include "merix/ed/editor.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_out_filer.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/add_entity.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/entity/ps_reactor.h"
#include "phonomark/registry/dc_reactor.h"
#include "phonomark/registry/ed_reactor.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/pm_reactor.h"
#include "phonomark/tagwindow/show_tag_window.h"
#include "phonomark/tagwindow/tag_window.h"
#include "tests/phonomark/module_fixture.h"

#include <QEvent>

#include <functional>
#include <new>

namespace {

std::string lineOf(const std::string& what) {
    return "phonomark: " + what + " failed: std::bad_alloc\n";
}

/// A note that throws when it is asked what it is.
class Trap final : public MxDbPhonomark {
public:
    MxRxClass* isA() const override {
        if (isSet)
            throw std::bad_alloc();
        return MxDbPhonomark::isA();
    }
    static inline bool isSet = false;
};

class ThrowingView final : public TransformView {
public:
    ThrowingView()
        : TransformView(1.0) {}
    const merix::ge::ViewTransform& transform() const override { throw std::bad_alloc(); }
};

template <class Writer> struct ThrowingWriter final : Writer {
    using Writer::Writer;
    Mx::ErrorStatus writeString(const wchar_t*) override { throw std::bad_alloc(); }
    Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId&) override { throw std::bad_alloc(); }
};
struct ThrowingDxfWriter final : merix::io::DxfOutFiler {
    using DxfOutFiler::DxfOutFiler;
    Mx::ErrorStatus writeString(int, const wchar_t*) override { throw std::bad_alloc(); }
};
struct ThrowingReader final : merix::db::DwgReader {
    using DwgReader::DwgReader;
    Mx::ErrorStatus readUInt32(std::uint32_t&) override { throw std::bad_alloc(); }
    Mx::ErrorStatus readSoftPointerId(MxDbObjectId&) override { throw std::bad_alloc(); }
};
struct ThrowingDxfReader final : merix::io::DxfInFiler {
    using DxfInFiler::DxfInFiler;
    bool atSubclassData(const wchar_t*) override { throw std::bad_alloc(); }
};

/// Throws when what it filters is hidden.
class ThrowAtHiding final : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Hide)
            throw std::bad_alloc();
        return false;
    }
};

class BorderTest : public ModuleTest {
protected:
    void TearDown() override {
        Trap::isSet = false;
        ModuleTest::TearDown();
    }
    /// What `call` says on standard error.
    template <class Call> static std::string said(const Call& call) {
        testing::internal::CaptureStderr();
        call();
        return testing::internal::GetCapturedStderr();
    }
    MxDbObjectId addTrap() {
        auto trap = std::make_unique<Trap>();
        MxDbObjectId id;
        if (!addEntityToCurrentSpace(id, trap.get()))
            return {};
        static_cast<void>(trap.release());
        livePhManager()->AppendPhonomark(id, &document());
        return id;
    }
    MxDbObjectId m_line, m_attached;
    /// Files `object` with filers that throw; each answers that the item is unreadable and says `what`.
    template <class T> void expectFiled(const std::string& what) {
        T object;
        const merix::io::DxfEncoding encoding{"AC1032", "ANSI_1252"};
        Mx::ErrorStatus status = Mx::eOk;
        ThrowingWriter<merix::db::DwgWriter> writer(MxDbFilerType::kFile, &database());
        EXPECT_EQ(said([&] { status = object.dwgOutFields(&writer); }), lineOf("writing " + what));
        EXPECT_EQ(status, Mx::eItemUnreadable);
        ThrowingDxfWriter dxfWriter(database(), encoding);
        EXPECT_EQ(said([&] { status = object.dxfOutFields(&dxfWriter); }), lineOf("writing " + what));
        EXPECT_EQ(status, Mx::eItemUnreadable);
        merix::db::DwgWriter whole(MxDbFilerType::kFile, &database());
        EXPECT_EQ(object.dwgOutFields(&whole), Mx::eOk);
        const std::string stream = whole.take();
        ThrowingReader reader(stream, MxDbFilerType::kFile, &database());
        EXPECT_EQ(said([&] { status = object.dwgInFields(&reader); }), lineOf("reading " + what));
        EXPECT_EQ(status, Mx::eItemUnreadable);
        ThrowingDxfReader dxfReader(database(), encoding, std::vector<merix::io::DxfTag>());
        EXPECT_EQ(said([&] { status = object.dxfInFields(&dxfReader); }), lineOf("reading " + what));
        EXPECT_EQ(status, Mx::eItemUnreadable);
    }
};

} // namespace

TEST_F(BorderTest, WhatIsThrownBecomesALineAndAnAnswer) {
    EXPECT_EQ(said([] { EXPECT_FALSE(guarded("a step", [] { throw std::bad_alloc(); })); }), lineOf("a step"));
    EXPECT_EQ(said([] { EXPECT_FALSE(guarded("a step", [] { throw 7; })); }), "phonomark: a step failed\n");
    EXPECT_EQ(said([] { EXPECT_TRUE(guarded("a step", [] {})); }), "");
    EXPECT_EQ(said([] {
                  try {
                      throw std::bad_alloc();
                  } catch (...) {
                      EXPECT_EQ(failed("a call", 42), 42);
                  }
              }),
              lineOf("a call"));
}

TEST_F(BorderTest, AFilingAnswersThatItFailed) {
    expectFiled<MxDbPhonomark>("a note");
    expectFiled<PhonomarkPsReactor>("an attachment");
}

TEST_F(BorderTest, ANoteThatCannotBeMeasuredHasNoExtents) {
    const MxDbObjectId id = addNote();
    const ThrowingView view;
    MxDbExtents extents;
    EXPECT_EQ(said([&] { EXPECT_EQ(note(id).subGetGeomExtents(extents), Mx::eInvalidExtents); }),
              lineOf("measuring a note"));
}

TEST_F(BorderTest, AnEventEndsWithALineAndLeavesNothingLocked) {
    const MxDbObjectId id = addTrap();
    m_attached = addTrap();
    m_line = addLine();
    const std::vector<std::pair<std::string, std::function<void()>>> events{
        {"a change of the layout", [] { g_editorrect->layoutSwitched(L"Model"); }},
        {"a change of the view", [] { g_editorrect->viewChanged(); }},
        {"a drawing's activation", [this] { g_dcReactor.documentActivated(&document()); }},
        {"a move of the cursor",
         [id] {
             MxEdInputPoint input;
             input.pointComputed = true;
             input.pickedEntities = {id};
             EXPECT_EQ(PhonomarkPmReactor().monitorInputPoint(input), Mx::eInvalidInput);
         }},
        {"following an object",
         [this] {
             PhonomarkPsReactor reactor;
             reactor.setNoteId(m_attached);
             reactor.modified(merix::db::DatabaseImp::peek(m_line));
         }},
    };
    for (const auto& [what, event] : events) {
        Trap::isSet = true;
        EXPECT_EQ(said(event), lineOf(what));
        Trap::isSet = false;
        EXPECT_TRUE(DocumentLock(&document(), L"Other", 298).isHeld()) << what;
    }
}

TEST_F(BorderTest, AWindowThatCannotBeHiddenStopsNeitherADeactivationNorAnEnd) {
    const MxDbObjectId id = addNote();
    ThrowAtHiding thrower;
    const auto show = [&] {
        removeTagWindow();
        ShowTagWindow(CPoint{100, 100}, &note(id));
        g_taguidlg->installEventFilter(&thrower);
    };
    show();
    EXPECT_EQ(said([this] { g_dcReactor.documentToBeDeactivated(&document()); }), lineOf("a drawing's deactivation"));
    g_taguidlg->removeEventFilter(&thrower);
    show();
    EXPECT_EQ(said([this] { g_dcReactor.documentToBeDestroyed(&document()); }), lineOf("the end of a hover monitor"));
    g_taguidlg->removeEventFilter(&thrower);
    EXPECT_TRUE(listed().empty());
}
