// SPDX-License-Identifier: MIT
#include "tests/phonomark/module_fixture.h"

#include "merix/db/entities.h"
#include "merix/ed/command_stack.h"
#include "merix/gi/scene.h"
#include "phonomark/app/entry_point.h"
#include "phonomark/app/module_state.h"
#include "phonomark/app/phonomark_app.h"
#include "phonomark/dbutil/add_entity.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/tagwindow/show_tag_window.h"

#include <QSettings>

#include <cstdlib>
#include <memory>

using merix::ap::DocManager;

namespace {

/// Gives the prompts their answers in order, then Esc.
class Answers : public merix::ed::InputSource {
public:
    Answers(std::deque<std::string> lines, std::string escape)
        : m_lines(std::move(lines))
        , m_escape(std::move(escape)) {
        merix::ed::Prompter::instance().setSource(this);
    }
    ~Answers() override { merix::ed::Prompter::instance().setSource(nullptr); }

    bool feed() override {
        auto& prompter = merix::ed::Prompter::instance();
        if (m_lines.empty()) {
            prompter.cancel();
            return false;
        }
        const std::string line = m_lines.front();
        m_lines.pop_front();
        if (line == m_escape)
            prompter.cancel();
        else
            prompter.submitLine(QString::fromStdString(line));
        return true;
    }

private:
    std::deque<std::string> m_lines;
    std::string m_escape;
};

} // namespace

void ModuleTest::SetUp() {
    QSettings(QStringLiteral("VORKAS/MERIX/2026"), QStringLiteral("MERIX")).clear();
    m_document = DocManager::instance().create();
    mxrxEntryPoint(kNullMsg, this);
    ASSERT_EQ(mxrxEntryPoint(kInitAppMsg, this), 0);
    printed();
}

void ModuleTest::TearDown() {
    removeTagWindow();
    while (auto* open = dynamic_cast<merix::ap::Document*>(DocManager::instance().curDocument()))
        DocManager::instance().close(*open);
    if (livePhManager())
        mxrxEntryPoint(kUnloadAppMsg, this);
}

MxDbObjectId ModuleTest::addNote(int type, const MxGePoint3d& position) {
    auto added = std::make_unique<MxDbPhonomark>();
    added->setPhonomarkType(type);
    added->setPosition(position);
    MxDbObjectId id;
    if (!addEntityToCurrentSpace(id, added.get()))
        return {};
    static_cast<void>(added.release());
    livePhManager()->AppendPhonomark(id, m_document);
    return id;
}

MxDbObjectId ModuleTest::addLine() {
    auto line = std::make_unique<merix::db::Line>();
    line->end = {10, 5, 0};
    MxDbObjectId id;
    if (!addEntityToCurrentSpace(id, line.get()))
        return {};
    static_cast<void>(line.release());
    return id;
}

MxDbPhonomark& ModuleTest::note(MxDbObjectId id) {
    MxDbPhonomark* found = nullptr;
    if (mxdbOpenObject(found, id, Mx::kForRead, true) != Mx::eOk)
        throw std::runtime_error("no such note");
    found->close();
    return *found;
}

std::vector<MxDbObjectId> ModuleTest::listed() {
    std::vector<MxDbObjectId> ids;
    livePhManager()->GetAllObjects(ids, m_document);
    return ids;
}

std::string ModuleTest::printed() {
    auto& console = merix::ed::Console::instance();
    const std::string text = console.unread().toStdString();
    console.markRead();
    return text;
}

void ModuleTest::run(const std::string& command, std::deque<std::string> answers) {
    const Answers source(std::move(answers), kEscape);
    merix::ed::CommandStack::instance().runLine(QString::fromStdString(command));
}

TransformView::TransformView(double unitsPerPixel) {
    m_transform.unitsPerPixel = unitsPerPixel;
    m_transform.width = 800;
    m_transform.height = 600;
    merix::ed::setActiveView(this);
}

TransformView::~TransformView() {
    merix::ed::setActiveView(nullptr);
}

std::vector<MxDbObjectId> TransformView::under(const MxGePoint3d& world) {
    MxDbDatabase& database = *mxdbHostApplicationServices()->workingDatabase();
    return merix::gi::Scene(database).pick(database.currentSpaceId(), world, 5 * m_transform.unitsPerPixel);
}

std::vector<MxDbObjectId> TransformView::inBox(const MxDbExtents& box, bool crossing) {
    MxDbDatabase& database = *mxdbHostApplicationServices()->workingDatabase();
    return merix::gi::Scene(database).inBox(database.currentSpaceId(), box, crossing);
}

unsigned char* soundBytes(std::size_t count) {
    auto* bytes = static_cast<unsigned char*>(std::calloc(count + 1, 1));
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<unsigned char>(i + 1);
    return bytes;
}
