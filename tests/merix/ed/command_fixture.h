// SPDX-License-Identifier: MIT
// Commands typed at the command line of a real drawing, and what they did to its database.
#pragma once

#include "answers.h"
#include "merix/ap/document_imp.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"
#include "merix/ed/active_view.h"
#include "merix/ed/command_stack.h"
#include "merix/ed/editor.h"
#include "merix/ed/selection.h"
#include "merix/gi/scene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace merix::test {

/// The view of a drawing without a window: 400 by 300 pixels that show 0,0 to 400,300.
class SceneView : public ed::ActiveView {
public:
    explicit SceneView(ap::Document& document)
        : m_document(document)
        , m_scene(*document.database()) {
        ed::setActiveView(this);
    }
    ~SceneView() override { ed::setActiveView(nullptr); }
    const ge::ViewTransform& transform() const override { return m_transform; }
    void setTransform(const ge::ViewTransform& transform) override {
        m_transform = transform;
        ed::Editor::instance().notifyViewChanged();
    }
    std::optional<ge::ViewTransform> showingAll() override {
        return ge::fitMeasured(m_transform, [this](const auto&) { return m_scene.extents(space()); });
    }
    std::vector<MxDbObjectId> under(const MxGePoint3d& world) override {
        return m_scene.pick(space(), world, 5.0 * m_transform.unitsPerPixel);
    }
    std::vector<MxDbObjectId> inBox(const MxDbExtents& box, bool crossing) override {
        return m_scene.inBox(space(), box, crossing);
    }
    void regenerate() override { ++regenerations; }
    void update() override { ++updates; }
    void drawEntity(MxDbObjectId, bool) override {}

    int regenerations = 0, updates = 0;

private:
    MxDbObjectId space() const { return m_document.database()->currentSpaceId(); }
    ap::Document& m_document;
    gi::Scene m_scene;
    ge::ViewTransform m_transform{{200, 150}, 1.0, 400, 300};
};

/// The state of every object that is there, by handle, and the header.
struct Snapshot {
    std::map<std::uint64_t, std::string> images;
    db::DrawingHeader header;
    bool operator==(const Snapshot&) const = default;
};

class CommandFixture : public testing::Test {
protected:
    CommandFixture()
        : document(*ap::DocManager::instance().create())
        , database(document.database()->imp())
        , view(std::make_unique<SceneView>(document)) {
        ed::Selection::instance().clear();
        ed::Console::instance().markRead();
    }
    ~CommandFixture() override {
        view.reset();
        ap::DocManager::instance().close(document);
    }

    /// Lines as they are typed, one after the other: commands, and answers while a prompt waits. A prompt after the
    /// last is ended by Esc.
    void type(std::vector<QString> lines) {
        while (!lines.empty()) {
            const QString command = lines.front();
            lines.erase(lines.begin());
            Answers answers(lines);
            ed::CommandStack::instance().runLine(command);
            lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(answers.used()));
        }
    }
    void type(std::initializer_list<const char*> lines) { type(texts(lines)); }
    static std::vector<QString> texts(const std::vector<const char*>& lines) {
        std::vector<QString> texts;
        for (const char* line : lines)
            texts.push_back(QString::fromUtf8(line));
        return texts;
    }
    /// The same; what it did is one step, and undo and redo give back the very bytes.
    void typeUndoable(std::initializer_list<const char*> lines) {
        const std::size_t steps = database.undo.undoUnits().size();
        const Snapshot before = snapshot();
        type(lines);
        const Snapshot after = snapshot();
        EXPECT_FALSE(before == after) << "nothing was done: " << shown();
        ASSERT_EQ(database.undo.undoUnits().size(), steps + 1) << shown();
        ASSERT_TRUE(database.undo.undo());
        EXPECT_TRUE(snapshot() == before) << "undo";
        ASSERT_TRUE(database.undo.redo());
        EXPECT_TRUE(snapshot() == after) << "redo";
    }
    /// The same; nothing is changed, and there is no step to undo.
    void typeInVain(std::initializer_list<const char*> lines) { typeInVain(std::vector<const char*>(lines)); }
    void typeInVain(const std::vector<const char*>& lines) {
        const std::size_t steps = database.undo.undoUnits().size();
        const Snapshot before = snapshot();
        type(texts(lines));
        EXPECT_TRUE(snapshot() == before) << shown();
        EXPECT_EQ(database.undo.undoUnits().size(), steps) << shown();
    }
    Snapshot snapshot() const {
        Snapshot result{{}, database.header};
        for (const db::ObjectStub& stub : database.stubs())
            if (stub.object && !stub.erased && !stub.handle.isNull())
                result.images[stub.handle.value()] = db::dwgImage(*stub.object, MxDbFilerType::kUndo);
        return result;
    }
    /// What the command line showed since the last look.
    static std::string shown() {
        const QString text = ed::Console::instance().unread();
        ed::Console::instance().markRead();
        return text.toStdString();
    }
    /// The entities of the current space that are there, in drawing order.
    std::vector<MxDbObjectId> entities() const {
        std::vector<MxDbObjectId> ids;
        for (const MxDbObjectId id : database.block(database.currentSpace)->entityIds())
            if (db::DatabaseImp::peek(id))
                ids.push_back(id);
        return ids;
    }
    template <class T> const T& entity(std::size_t place) const {
        return dynamic_cast<const T&>(*db::DatabaseImp::peek(entities().at(place)));
    }
    template <class T> const T& last() const { return entity<T>(entities().size() - 1); }

    ap::Document& document;
    db::DatabaseImp& database;
    std::unique_ptr<SceneView> view;
};

} // namespace merix::test
