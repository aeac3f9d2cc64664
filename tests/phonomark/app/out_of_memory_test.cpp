// SPDX-License-Identifier: MIT
// Memory that runs out inside the module, at every allocation that the module itself makes while the host calls it.
// Nothing may come out of the module but a line that says what failed, and everything must go on.
#include "tests/phonomark/app/loaded_module.h"

#include "merix/ap/document_imp.h"
#include "merix/gi/scene.h"

#include <QApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>
#include <set>

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>

using merix::ap::DocManager;
using merix::rx::Module;
using merix::rx::ModuleLoader;

namespace {

/// Where a library is mapped; empty when it is not.
struct Mapping {
    std::uintptr_t begin = 0, end = 0;
    bool holds(const void* place) const {
        const auto at = reinterpret_cast<std::uintptr_t>(place);
        return at >= begin && at < end;
    }
};

Mapping mappingOf(std::string_view wanted) {
    struct Search {
        std::string_view name;
        Mapping found;
    } search{wanted, {}};
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            auto& [name, found] = *static_cast<Search*>(data);
            const std::string_view path = info->dlpi_name;
            if (name.empty() ? !path.empty() : path.find(name) == std::string_view::npos)
                return 0;
            for (int i = 0; i < info->dlpi_phnum; ++i) {
                const auto& part = info->dlpi_phdr[i];
                if (part.p_type == PT_LOAD) {
                    found.begin = found.end ? found.begin : info->dlpi_addr + part.p_vaddr;
                    found.end = info->dlpi_addr + part.p_vaddr + part.p_memsz;
                }
            }
            return 1;
        },
        &search);
    return search.found;
}

/// Counts the module's own allocations while it is armed and fails one of them. An allocation is the module's own when
/// the first function on the way to it that is neither the C++ library's, a sanitizer's nor this program's is the
/// module's.
class Scarcity {
public:
    static void arm(int failing) {
        g_program = mappingOf("");
        g_library = mappingOf("libstdc++");
        g_sanitizer = mappingOf("san.so");
        g_module = {};
        g_count = 0;
        g_failing = failing;
        g_armed = true;
    }
    /// Whether the allocation was reached that was to fail.
    static bool disarm() {
        g_armed = false;
        return g_count > g_failing;
    }
    static bool fails() {
        if (!g_armed || !std::exchange(g_armed, false)) // what is done here is not counted
            return false;
        const bool fails = isOfModule() && g_count++ == g_failing;
        g_armed = true;
        return fails;
    }

private:
    static bool isOfModule() {
        if (!g_module.end) // it comes while it is loaded
            g_module = mappingOf("libMrxPhonomark.mrx");
        std::array<void*, 16> frames{};
        const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
        const auto* const last = frames.begin() + count;
        const auto* const caller = std::find_if(frames.cbegin(), frames.cbegin() + count, [](const void* frame) {
            return !g_program.holds(frame) && !g_library.holds(frame) && !g_sanitizer.holds(frame);
        });
        return caller != last && g_module.holds(*caller);
    }

    static inline bool g_armed = false;
    static inline int g_count = 0, g_failing = -1;
    static inline Mapping g_program, g_library, g_sanitizer, g_module;
};

} // namespace

// All forms, for a sanitizer brings those that a program lacks, and takes no block of one for a block of the other.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Scarcity::fails() ? nullptr : std::malloc(size ? size : 1);
}
void* operator new(std::size_t size) {
    void* const block = operator new(size, std::nothrow);
    if (!block)
        throw std::bad_alloc();
    return block;
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return operator new(size, std::nothrow);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

namespace {

class OutOfMemoryTest : public LoadedModuleTest {
protected:
    /// Repeats `call` with the first, the second, ... allocation of the module failing until none is left to fail, and
    /// looks each time at what came out and at the drawings. `before` prepares a call with memory to spare.
    /// Says how many those were.
    int atEveryAllocation(
        const std::function<void()>& call, const std::function<void()>& before = [] {}) {
        bool reached = true;
        int failures = 0;
        for (int failing = 0; reached && !HasFailure(); ++failing) {
            SCOPED_TRACE(testing::Message() << "allocation " << failing);
            EXPECT_LT(failing, 2000);
            before();
            merix::ed::Console::instance().markRead();
            testing::internal::CaptureStderr();
            Scarcity::arm(failing);
            call();
            reached = Scarcity::disarm();
            expectReported(testing::internal::GetCapturedStderr(), reached);
            EXPECT_FALSE(merix::ed::Console::instance().unread().contains(QStringLiteral("failed")))
                << merix::ed::Console::instance().unread().toStdString();
            expectOrder();
            failures += reached;
        }
        EXPECT_GT(failures, 0) << "the module allocates nothing here";
        return failures;
    }
    void expectReported(const std::string& lines, bool failed) {
        for (const auto& line : QString::fromStdString(lines).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            if (line.startsWith(QLatin1String("QStandardPaths")) || line.startsWith(QLatin1String("This plugin")))
                continue;
            EXPECT_TRUE(line.startsWith(QLatin1String("phonomark: ")) &&
                        line.endsWith(QLatin1String(" failed: std::bad_alloc")))
                << line.toStdString();
            m_lines.insert(line.toStdString());
            EXPECT_TRUE(failed);
        }
    }
    /// Nothing is open or locked, no undo step is left open, and the drawing is sound.
    static void expectOrder() {
        for (MxApDocument* each : DocManager::instance().documents()) {
            for (const merix::db::ObjectStub& stub : each->database()->imp().stubs()) {
                if (stub.object) {
                    EXPECT_FALSE(stub.object->data().writer) << stub.handle.value();
                    EXPECT_EQ(stub.object->data().readers, 0) << stub.handle.value();
                }
            }
            EXPECT_FALSE(each->database()->imp().undo.isOpen());
            EXPECT_EQ(DocManager::instance().lockDocument(each, MxApLockMode::kWrite, L"Other", L"", false), Mx::eOk);
            EXPECT_EQ(DocManager::instance().unlockDocument(each), Mx::eOk);
        }
        EXPECT_THAT(printedBy("AUDIT"), ::testing::HasSubstr("No faults found (0 broken, 0 loose)"));
    }
    /// Every note is listed once where the drawing's list is written.
    void expectListed() {
        ASSERT_TRUE(DocManager::instance().writeCopy(document(), file("list.merix")).ok);
        std::vector<std::wstring> notes;
        for (const MxDbObjectId& id : entities()) {
            wchar_t text[17];
            id.handle().getIntoAsciiBuffer(text);
            notes.emplace_back(text);
        }
        EXPECT_THAT(stored(*document().database()), ::testing::UnorderedElementsAreArray(notes));
    }
    QString file(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    /// All of these were named as what failed.
    void expectNamed(std::initializer_list<const char*> names) {
        for (const char* name : names)
            EXPECT_THAT(m_lines, ::testing::Contains(std::string("phonomark: ") + name + " failed: std::bad_alloc"));
    }

private:
    QTemporaryDir m_folder;
    std::set<std::string> m_lines;
};

} // namespace

TEST_F(OutOfMemoryTest, InACommandEndsTheCommand) {
    load();
    atEveryAllocation([] { run("PHONOMARK", {QStringLiteral("10,20")}); });
    atEveryAllocation([] { run("VOICESHOW"); });
    expectNamed({"PHONOMARK", "VOICESHOW"});
}

TEST_F(OutOfMemoryTest, InTheListOfNotesLeavesItOpen) {
    load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    atEveryAllocation([] {
        QTimer::singleShot(0, qApp, [] {
            if (QWidget* window = QApplication::activeModalWidget())
                window->close();
        });
        run("VOICEMAN");
    });
    expectNamed({"VOICEMAN", "opening the list of notes"});
}

TEST_F(OutOfMemoryTest, WhileADrawingIsSavedOpenedActivatedAndClosed) {
    load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    run("PHONOMARK", {QStringLiteral("20,20")});
    atEveryAllocation([this] { DocManager::instance().writeCopy(document(), file("copy.merix")); });
    expectListed();
    for (const char* name : {"whole.dxf", "whole.merix"}) {
        ASSERT_TRUE(DocManager::instance().saveAs(document(), file("away.dxf")).ok);
        ASSERT_TRUE(DocManager::instance().saveAs(document(), file(name)).ok);
        QFile::copy(file(name), file("other.") + QFileInfo(file(name)).suffix());
        atEveryAllocation([&] {
            merix::ap::Document* other = nullptr;
            if (DocManager::instance().open(file("other.") + QFileInfo(file(name)).suffix(), &other).ok) {
                DocManager::instance().activate(&document());
                DocManager::instance().close(*other);
            }
        });
    }
    expectListed();
    expectNamed({"a drawing's save", "a drawing's coming", "a drawing's activation", "reading a note"});
}

TEST_F(OutOfMemoryTest, WhileANoteIsErasedAndComesBack) {
    load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    const MxDbObjectId note = entities().front();
    atEveryAllocation([&] {
        MxDbObject* object = nullptr;
        ASSERT_EQ(mxdbOpenObject(object, note, Mx::kForWrite, true), Mx::eOk);
        object->erase(!object->isErased());
        object->close();
        ASSERT_EQ(mxdbOpenObject(object, note, Mx::kForWrite, true), Mx::eOk);
        object->erase(!object->isErased());
        object->close();
    });
    expectNamed({"a note's erasure"});
}

TEST_F(OutOfMemoryTest, WhileNotesAreDrawnAndGripped) {
    load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    const MxDbObjectId note = entities().front();
    atEveryAllocation([&] {
        merix::gi::Scene scene(*document().database());
        scene.pick(document().database()->currentSpaceId(), {10, 20, 0}, 30);
        MxDbEntity* entity = nullptr;
        if (mxdbOpenObject(entity, note, Mx::kForRead) == Mx::eOk) {
            std::vector<MxGePoint3d> grips;
            entity->subGetGripPoints(grips);
            entity->close();
        }
    });
    expectNamed({"drawing a note", "the grips of a note"});
}

TEST_F(OutOfMemoryTest, AtALoadTakesTheModuleOutAgain) {
    int refused = 0;
    const int failures = atEveryAllocation(
        [&] {
            if (!ModuleLoader::instance().load(kModulePath))
                ++refused;
        },
        [] {
            ModuleLoader::instance().unloadAll();
            EXPECT_EQ(classesRegistered(), 0);
        });
    EXPECT_EQ(refused, failures);
    EXPECT_EQ(classesRegistered(), int(kModuleClasses.size()));
    EXPECT_EQ(call("(PhonomarkShow)"), "1");
    expectNamed({"the module's load"});
}

TEST_F(OutOfMemoryTest, AtAnUnloadTheOtherStepsAreTakenAndNothingUnmappedIsCalled) {
    load();
    run("PHONOMARK", {QStringLiteral("10,20")});
    int failedAtItsEnd = 0;
    atEveryAllocation(
        [&] {
            const auto result = ModuleLoader::instance().unload(*ModuleLoader::instance().modules().front());
            if (result.error.find("failed at its end") != std::string::npos)
                ++failedAtItsEnd;
        },
        [] { ModuleLoader::instance().load(kModulePath); });
    EXPECT_GT(failedAtItsEnd, 0) << "the host was told";
    EXPECT_EQ(classesRegistered(), 0);
    load();
    expectListed();
    expectNamed({"saving a drawing's list", "keeping what is watched", "keeping the show switch"});
}
