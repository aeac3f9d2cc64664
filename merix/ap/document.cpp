// SPDX-License-Identifier: MIT
#include "merix/ap/document_private.h"

#include "merix/ed/editor.h"
#include "merix/ed/selection.h"
#include "merix/rx/class_registry.h"

#include <QFileInfo>

MERIX_RX_CLASS(MxApDocument, "MxApDocument", MxRxObject, nullptr, "")

namespace merix::ap {

namespace {

QStringList namesOf(const std::vector<db::UndoUnit>& units) {
    QStringList names;
    for (auto unit = units.rbegin(); unit != units.rend(); ++unit)
        names << (unit->name.empty() ? QStringLiteral("a change") : QString::fromStdWString(unit->name));
    return names;
}

} // namespace

void Document::Private::objectAppended(MxDbObject&) {
    tellChanged();
}
void Document::Private::objectModified(MxDbObject&) {
    tellChanged();
}
void Document::Private::objectGraphicsModified(MxDbObject&) {
    Q_EMIT owner.graphicsChanged();
}
void Document::Private::objectErased(MxDbObject&, bool) {
    tellChanged();
}
void Document::Private::headerChanged() {
    tellChanged();
}
void Document::Private::tellChanged() {
    // What the program itself does while it records nothing, such as loading the line type of a picture, is no change
    // of the user's.
    if (!database->imp().undo.isRecording() && !undoing) {
        Q_EMIT owner.graphicsChanged();
        return;
    }
    changed = true;
    ++changes;
    owner.noteChange();
    Q_EMIT owner.graphicsChanged();
}

void Document::Private::releaseLocks() {
    for (; lockDepth > 0; --lockDepth)
        database->imp().undo.end();
    lockName.clear();
}

Document::Document(std::unique_ptr<MxDbDatabase> database, const QString& path, const QString& title)
    : m(std::make_unique<Private>(*this)) {
    m->database = std::move(database);
    m->path = path;
    m->title = title;
    m->database->imp().clearChanged();
    m->database->imp().addListener(m.get());
    m->layouts = layouts();
}

Document::~Document() {
    m->database->imp().removeListener(m.get());
}

MxDbDatabase* Document::database() const {
    return m->database.get();
}

ed::InputPoints* Document::inputPointManager() const {
    return &m->points;
}

const QString& Document::path() const {
    return m->path;
}

QString Document::title() const {
    return m->path.isEmpty() ? m->title : QFileInfo(m->path).fileName();
}

bool Document::isChanged() const {
    return m->changed;
}

quint64 Document::changes() const {
    return m->changes;
}

bool Document::isBusy() const {
    return m->commands > 0;
}

void Document::noteChange() {
    if (isChanged() == m->wasChanged)
        return;
    m->wasChanged = !m->wasChanged;
    Q_EMIT titleChanged();
}

QStringList Document::undoNames() const {
    return namesOf(m->database->imp().undo.undoUnits());
}

QStringList Document::redoNames() const {
    return namesOf(m->database->imp().undo.redoUnits());
}

ge::ViewTransform& Document::view() {
    return m->view;
}

QStringList Document::layouts() const {
    QStringList names;
    for (const auto& layout : m->database->imp().layouts())
        names << QString::fromStdWString(layout.name);
    return names;
}

QString Document::currentLayout() const {
    return m->layout;
}

bool Document::setCurrentLayout(const QString& name) {
    for (const auto& layout : m->database->imp().layouts()) {
        const QString known = QString::fromStdWString(layout.name);
        if (known.compare(name, Qt::CaseInsensitive) != 0 || layout.space.isNull())
            continue;
        if (known == m->layout)
            return true;
        m->layout = known;
        m->database->imp().currentSpace = layout.space;
        ed::Selection::instance().clear(); // it is of the space that was current
        Q_EMIT layoutChanged();
        ed::Editor::instance().notifyLayoutSwitched(layout.name);
        return true;
    }
    return false;
}

void Document::followLayouts() {
    if (QStringList now = layouts(); now != m->layouts) {
        m->layouts = std::move(now);
        Q_EMIT layoutsChanged();
    }
    const MxDbObjectId space = m->database->imp().currentSpace;
    for (const auto& layout : m->database->imp().layouts()) {
        const QString name = QString::fromStdWString(layout.name);
        if (layout.space != space)
            continue;
        if (name != m->layout) {
            m->layout = name;
            Q_EMIT layoutChanged();
        }
        return;
    }
    setCurrentLayout(QStringLiteral("Model"));
}

} // namespace merix::ap
