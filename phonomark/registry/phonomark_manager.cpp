// SPDX-License-Identifier: MIT
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/layout.h"
#include "host/ed/input.h"
#include "phonomark/dbutil/border.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/opened.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/object_watch.h"
#include "phonomark/tagwindow/pm_reactor.h"
#include "phonomark/tagwindow/show_tag_window.h"

namespace {

constexpr int kRedrawDraw = 1;
constexpr int kRedrawUndraw = 2;
constexpr unsigned kLockedLayerText = 287;
constexpr unsigned kUpdateAllText = 297;
constexpr unsigned kEraseText = 298;

// The pointer keeps its value when the registry goes; whether it may be followed is told by the mark.
PhonomarkManager* g_manager = nullptr;
bool g_managerAlive = false;

std::vector<MxApDocument*> openDocuments() {
    const MxApDocManager* manager = mxDocManagerPtr();
    return manager ? manager->documents() : std::vector<MxApDocument*>();
}

/// The blocks that the drawing's layouts show, in the order of the layouts.
std::vector<MxDbObjectId> layoutBlocks(const MxDbDatabase& database) {
    std::vector<MxDbObjectId> blocks;
    MxDbDictionary* layouts = nullptr;
    if (mxdbOpenLayoutDictionary(layouts, database, Mx::kForRead) != Mx::eOk)
        return blocks;
    const Opened<MxDbDictionary> closed(layouts);
    for (const auto& [name, id] : layouts->entries())
        if (const Opened<MxDbLayout> layout(id, Mx::kForRead); layout)
            blocks.push_back(layout->block);
    return blocks;
}

} // namespace

void createMxPhManager() {
    if (g_managerAlive)
        return;
    g_manager = new PhonomarkManager;
    g_managerAlive = true;
}

void deleteMxPhManager() {
    if (!g_managerAlive)
        return;
    delete g_manager;
    g_managerAlive = false;
}

PhonomarkManager* mxPhManagerPtr() {
    return g_manager;
}

PhonomarkManager* livePhManager() {
    return g_managerAlive ? g_manager : nullptr;
}

PhonomarkManager::PhonomarkManager() {
    for (MxApDocument* document : openDocuments()) {
        ReadVoiceHandle(document);
        resumeWatching(document);
    }
}

PhonomarkManager::~PhonomarkManager() {
    guarded("putting the notes away", [this] {
        for (MxApDocument* document : openDocuments()) {
            guarded("saving a drawing's list", [&] { SaveVoiceHandle(document->database()); });
            guarded("keeping what is watched", [&] { keepWatched(*document); });
            guarded("letting a drawing's notes go", [&] { RemovePhonomark(document); });
        }
    });
    guarded("ending the playback", [] { AbortPlayingAndDestroyWnd(); });
    m_documents.clear();
}

bool PhonomarkManager::AppendPhonomark(MxDbObjectId id, MxApDocument* document) {
    std::unique_ptr<CDocData>& data = m_documents[document];
    if (!data)
        data = std::make_unique<CDocData>(document);
    data->AppendData(id);
    return true;
}

void PhonomarkManager::AppendPhonomark(MxApDocument* document) {
    const MxDbDatabase* database = document ? document->database() : nullptr;
    for (const MxDbObjectId& block : database ? layoutBlocks(*database) : std::vector<MxDbObjectId>()) {
        const Opened<MxDbBlockTableRecord> record(block, Mx::kForRead);
        for (const MxDbObjectId& id : record ? record->entityIds() : std::vector<MxDbObjectId>())
            if (const Opened<MxDbPhonomark> note(id, Mx::kForRead); note) // not erased, and a note
                AppendPhonomark(id, document);
    }
}

void PhonomarkManager::RemovePhonomark(MxDbObjectId id, MxApDocument* document) {
    const auto entry = m_documents.find(document);
    if (entry == m_documents.end() || !entry->second)
        return;
    entry->second->RemoveData(id);
    if (entry->second->ids().empty())
        m_documents.erase(entry);
}

void PhonomarkManager::RemovePhonomark(MxApDocument* document) {
    const auto entry = m_documents.find(document);
    if (entry != m_documents.end()) {
        if (entry->second)
            entry->second->RemoveAllData();
        m_documents.erase(entry);
    }
    if (document)
        unwatchDatabase(document->database()); // notes that are erased and may come back
}

void PhonomarkManager::GetAllObjects(std::vector<MxDbObjectId>& out, MxApDocument* document) {
    if (const CDocData* data = dataOf(document))
        out.insert(out.end(), data->ids().begin(), data->ids().end());
}

void PhonomarkManager::ShowAllObjects(bool show, MxApDocument* document) {
    std::vector<MxDbObjectId> ids; // a copy: the list may change while the host draws
    GetAllObjects(ids, document);
    for (const MxDbObjectId& id : ids)
        mxedRedraw(id, show ? kRedrawDraw : kRedrawUndraw);
}

void PhonomarkManager::UpdateAll(MxApDocument* document) {
    const auto entry = m_documents.find(document);
    if (entry == m_documents.end() || !entry->second || !document || !document->database())
        return;
    const std::vector<MxDbObjectId> ids = entry->second->ids();
    const MxDbObjectId currentSpace = document->database()->currentSpaceId();
    std::vector<MxDbObjectId> onLockedLayers;
    for (const MxDbObjectId& id : ids) {
        const DocumentLock lock(document, L"PhonomarkUpdateAll", kUpdateAllText);
        if (!lock.isHeld())
            return;
        Opened<MxDbPhonomark> note(id, Mx::kForRead);
        if (!note || note->ownerId() != currentSpace)
            continue;
        const Mx::ErrorStatus status = note->upgradeOpen();
        if (status == Mx::eOk)
            note->recordGraphicsModified(true);
        else if (status == Mx::eOnLockedLayer)
            onLockedLayers.push_back(id);
        note.close();
    }
    for (const MxDbObjectId& id : onLockedLayers)
        mxdbEntUpd(id);
}

bool PhonomarkManager::ErasePhonomark(MxDbObjectId id, MxApDocument* document) {
    // A refused lock has been told to the user; the note is erased in the unit of whoever holds the drawing.
    const DocumentLock lock(document ? document : currentDocument(), L"PhonomarkErase", kEraseText);
    Opened<MxDbPhonomark> note(id, Mx::kForWrite);
    if (note) {
        if (note->getPhonomarkType() == kObjectNote && note->attachObj().isValid())
            delNotifier(note.get(), note->attachObj());
        note->doUnhighlight();
        note->setErasing(true);
        note->erase(true);
        note.close();
        mxedSSClearFirst();
    } else if (note.status() == Mx::eOnLockedLayer) {
        mxutPrintText(resourceText(kLockedLayerText).c_str());
    }
    return true;
}
