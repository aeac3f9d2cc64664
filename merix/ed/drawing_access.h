// SPDX-License-Identifier: MIT
// What commands share to read and change the drawing they work on. Main thread only.
#pragma once

#include "host/db/layer.h"
#include "merix/db/database_imp.h"
#include "merix/db/entities.h"

#include <QString>

#include <memory>
#include <vector>

namespace merix::ed {

/// The drawing being worked on. Throws where there is none: commands run only while there is one, and one that ran all
/// the same fails.
db::DatabaseImp& drawing();

/// Prints a line.
void tell(const QString& line);

/// An object that is open until the end of its life.
template <class T> class Opened {
public:
    Opened(MxDbObjectId id, Mx::OpenMode mode) { m_status = mxdbOpenObject(m_object, id, mode); }
    ~Opened() { reset(); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;
    explicit operator bool() const { return m_object != nullptr; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    T* get() const { return m_object; }
    Mx::ErrorStatus status() const { return m_status; }
    void reset() {
        if (m_object)
            m_object->close();
        m_object = nullptr;
    }
    /// Closes and takes back what was changed.
    void cancel() {
        if (m_object)
            m_object->cancel();
        m_object = nullptr;
    }

private:
    T* m_object = nullptr;
    Mx::ErrorStatus m_status;
};

/// Adds an entity to the current space with the current layer, colour, line type and line weight. Null when the space
/// cannot be opened; the entity is then deleted.
MxDbObjectId addEntity(std::unique_ptr<MxDbEntity> entity);

/// False, after telling so, while the current layer is locked: what is drawn then could not be changed or taken back.
bool mayDraw();
/// A command that draws, refused where it may not.
template <void (*draw)()> void drawIfAllowed() {
    if (mayDraw())
        draw();
}

/// Adds a record to a symbol table, as a step that can be undone. Null on failure.
MxDbObjectId addRecord(MxDbObjectId table, std::unique_ptr<MxDbObject> record);

/// A name that a record may have: 1 to 255 characters, none of them a control character or one of <>/\":;?*|,=`
bool isRecordName(const QString& name);

/// The entities of the current space that are there, in drawing order.
std::vector<MxDbObjectId> entitiesOfSpace();

/// Erases entities; those on locked layers stay. The number of those that were erased.
int eraseEntities(const std::vector<MxDbObjectId>& ids);

} // namespace merix::ed
