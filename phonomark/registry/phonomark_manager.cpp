// SPDX-License-Identifier: MIT
#include "phonomark/registry/phonomark_manager.h"

#include "host/db/layout.h"
#include "host/ed/input.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/object_watch.h"
#include "phonomark/tagwindow/pm_reactor.h"
#include "phonomark/tagwindow/show_tag_window.h"

#include <cstdio>
#include <exception>

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
    for (const auto& [name, id] : layouts->entries()) {
        MxDbLayout* layout = nullptr;
        if (mxdbOpenObject(layout, id, Mx::kForRead) != Mx::eOk)
            continue;
        blocks.push_back(layout->block);
        layout->close();
    }
    layouts->close();
    return blocks;
}

/// A step of the registry's end that fails leaves the others to be done.
template <class Step> void guarded(const Step& step) {
    try {
        step();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "phonomark: the notes of a drawing were not put away: %s\n", error.what());
    }
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
    for (MxApDocument* document : openDocuments())
        ReadVoiceHandle(document);
}

PhonomarkManager::~PhonomarkManager() {
    guarded([this] {
        for (MxApDocument* document : openDocuments()) {
            guarded([&] { SaveVoiceHandle(document->database()); });
            guarded([&] { RemovePhonomark(document); });
        }
    });
    AbortPlayingAndDestroyWnd();
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
        MxDbBlockTableRecord* record = nullptr;
        if (mxdbOpenObject(record, block, Mx::kForRead) != Mx::eOk)
            continue;
        for (const MxDbObjectId& id : record->entityIds()) {
            MxDbPhonomark* note = nullptr;
            if (mxdbOpenObject(note, id, Mx::kForRead) != Mx::eOk)
                continue; // erased, or no note
            AppendPhonomark(id, document);
            note->close();
        }
        record->close();
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
    if (const CDocData* data = dataOf(document))
        for (const MxDbObjectId& id : data->ids())
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
        MxDbPhonomark* note = nullptr;
        if (mxdbOpenObject(note, id, Mx::kForRead) != Mx::eOk)
            continue;
        if (note->ownerId() == currentSpace) {
            const Mx::ErrorStatus status = note->upgradeOpen();
            if (status == Mx::eOk)
                note->recordGraphicsModified(true);
            else if (status == Mx::eOnLockedLayer)
                onLockedLayers.push_back(id);
        }
        note->close();
    }
    for (const MxDbObjectId& id : onLockedLayers)
        mxdbEntUpd(id);
}

bool PhonomarkManager::ErasePhonomark(MxDbObjectId id, MxApDocument* document) {
    const DocumentLock lock(document ? document : currentDocument(), L"PhonomarkErase", kEraseText);
    if (!lock.isHeld())
        return true;
    MxDbPhonomark* note = nullptr;
    const Mx::ErrorStatus status = mxdbOpenObject(note, id, Mx::kForWrite);
    if (status == Mx::eOk) {
        if (note->getPhonomarkType() == kObjectNote && note->attachObj().isValid())
            delNotifier(note, note->attachObj());
        note->doUnhighlight();
        note->setErasing(true);
        note->erase(true);
        note->close();
        mxedSSClearFirst();
    } else if (status == Mx::eOnLockedLayer) {
        mxutPrintText(resourceText(kLockedLayerText).c_str());
    }
    return true;
}
