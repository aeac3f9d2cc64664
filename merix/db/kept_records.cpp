// SPDX-License-Identifier: MIT
#include "merix/db/kept_records.h"

#include "merix/db/access.h"
#include "merix/db/database_imp.h"
#include "merix/db/dwg_filer.h"
#include "merix/rx/class_registry.h"
#include "merix/rx/text.h"

#include <algorithm>

namespace merix::db {

MERIX_RX_CLASS(KeptEntity, "MxDbKeptEntity", MxDbEntity, rx::makeObject<KeptEntity>, "")
MERIX_RX_CLASS(KeptObject, "MxDbKeptObject", MxDbObject, rx::makeObject<KeptObject>, "")

namespace {

KeptRecordHooks g_hooks;

const KeptEntity* asKeptEntity(const MxDbObject& object) {
    return object.isA() == KeptEntity::desc() ? static_cast<const KeptEntity*>(&object) : nullptr;
}
const KeptObject* asKeptObject(const MxDbObject& object) {
    return object.isA() == KeptObject::desc() ? static_cast<const KeptObject*>(&object) : nullptr;
}

template <class Kept> Mx::ErrorStatus writeKept(const Kept& kept, MxDbDwgFiler* filer) {
    writeBlob(*filer, kept.dxfName);
    filer->writeString(kept.className.c_str());
    writeBlob(*filer, kept.image);
    return writeBlob(*filer, kept.dxfTags);
}

template <class Kept> Mx::ErrorStatus readKept(Kept& kept, MxDbDwgFiler* filer) {
    if (const auto status = readBlob(*filer, kept.dxfName); status != Mx::eOk)
        return status;
    if (const auto status = readText(*filer, kept.className); status != Mx::eOk)
        return status;
    if (const auto status = readBlob(*filer, kept.image); status != Mx::eOk)
        return status;
    return readBlob(*filer, kept.dxfTags);
}

/// Tags in text form are pairs of lines: group code and value.
Mx::ErrorStatus writeTags(std::string_view tags, MxDbDxfFiler* filer) {
    const auto line = [&tags] {
        const std::size_t end = std::min(tags.find('\n'), tags.size());
        std::string_view text = tags.substr(0, end);
        tags.remove_prefix(std::min(end + 1, tags.size()));
        if (text.ends_with('\r'))
            text.remove_suffix(1);
        return text;
    };
    while (!tags.empty()) {
        const int code = std::atoi(std::string(line()).c_str());
        filer->writeString(code, rx::fromUtf8(line()).c_str());
    }
    return filer->filerStatus();
}

template <class Kept> std::unique_ptr<MxDbObject> keep(const MxDbObject& live) {
    auto kept = std::make_unique<Kept>();
    kept->dxfName = rx::toUtf8(live.isA()->dxfName());
    kept->className = live.isA()->name();
    kept->image = dwgImage(live, MxDbFilerType::kFile);
    if (g_hooks.dxfTags) {
        const ReadAccess readable(live);
        kept->dxfTags = g_hooks.dxfTags(live);
    }
    return kept;
}

/// The class that a kept record waits for, null while it is away.
const MxRxClass* classOf(const MxDbObject& kept) {
    const std::wstring_view className = keptClassName(kept);
    return className.empty() ? rx::findClassByDxfName(rx::fromUtf8(keptDxfName(kept)))
                             : mxrxFindMxRxClass(std::wstring(className).c_str());
}

std::unique_ptr<MxDbObject> revive(const MxDbObject& kept) {
    const MxRxClass* itsClass = classOf(kept);
    if (!itsClass)
        return nullptr;
    const bool entity = kept.data().isEntity;
    std::unique_ptr<MxRxObject> made(itsClass->create());
    if (!made || !made->isKindOf(entity ? MxDbEntity::desc() : MxDbObject::desc()) ||
        made->isKindOf(MxDbEntity::desc()) != entity)
        return nullptr;
    std::unique_ptr<MxDbObject> fresh(static_cast<MxDbObject*>(made.release()));
    const WorkingDatabaseScope working(kept.database());
    const std::string& image = entity ? asKeptEntity(kept)->image : asKeptObject(kept)->image;
    Mx::ErrorStatus status = Mx::eItemUnreadable;
    if (!image.empty())
        status = readDwgImage(*fresh, image, MxDbFilerType::kFile);
    else if (g_hooks.readDxf)
        status = g_hooks.readDxf(kept, *fresh);
    return status == Mx::eOk ? std::move(fresh) : nullptr;
}

/// Calls `change(object)` for every resident object of all open databases.
template <class Change> void forEveryObject(Change change) {
    for (DatabaseImp* database : std::vector<DatabaseImp*>(openDatabases())) {
        // Stubs never move and are only added at the end.
        for (std::size_t i = 0; i < database->stubs().size(); ++i) {
            if (MxDbObject* object = database->stubs()[i].object)
                change(*database, *object);
        }
    }
}

class ClassChanges final : public rx::ClassListener {
public:
    ClassChanges() { rx::addClassListener(this); }

    void classAboutToBeDeleted(const MxRxClass& aClass) override {
        const bool isReactor = aClass.isDerivedFrom(MxDbObjectReactor::desc());
        const bool isObject = aClass.isDerivedFrom(MxDbObject::desc());
        if (!isReactor && !isObject)
            return;
        forEveryObject([&](DatabaseImp& database, MxDbObject& object) {
            if (isReactor)
                forgetReactors(object, aClass);
            else if (object.isKindOf(&aClass))
                database.replaceObject(object,
                                       object.data().isEntity ? keep<KeptEntity>(object) : keep<KeptObject>(object));
        });
    }

    void hierarchyBuilt() override {
        forEveryObject([](DatabaseImp& database, MxDbObject& object) {
            if (keptDxfName(object).empty() && keptClassName(object).empty())
                return;
            if (auto fresh = revive(object))
                database.replaceObject(object, std::move(fresh));
        });
    }

private:
    /// Reactors of a class that goes are about to lose their code.
    static void forgetReactors(MxDbObject& object, const MxRxClass& aClass) {
        std::erase_if(object.data().reactors, [&aClass](const MxDbReactorEntry& entry) {
            return entry.transient && entry.transient->isKindOf(&aClass);
        });
    }
};

[[maybe_unused]] const auto* const g_classChanges = new ClassChanges;

} // namespace

void setKeptRecordHooks(const KeptRecordHooks& hooks) {
    g_hooks = hooks;
}

std::string_view keptDxfName(const MxDbObject& object) {
    if (const auto* entity = asKeptEntity(object))
        return entity->dxfName;
    const auto* kept = asKeptObject(object);
    return kept ? kept->dxfName : std::string_view();
}

std::wstring_view keptClassName(const MxDbObject& object) {
    if (const auto* entity = asKeptEntity(object))
        return entity->className;
    const auto* kept = asKeptObject(object);
    return kept ? kept->className : std::wstring_view();
}

bool restoreImage(MxDbObject& object, const std::string& image, const std::wstring& className) {
    if (className == object.isA()->name())
        return readDwgImage(object, image, MxDbFilerType::kUndo) == Mx::eOk;
    if (className == keptClassName(object)) {
        // Filed while the class was there: it is what the class will read when it comes back.
        if (object.data().isEntity)
            static_cast<KeptEntity&>(object).image = image;
        else
            static_cast<KeptObject&>(object).image = image;
        return true;
    }
    return false;
}

Mx::ErrorStatus KeptEntity::dwgInFields(MxDbDwgFiler* filer) {
    const auto status = MxDbEntity::dwgInFields(filer);
    return status == Mx::eOk ? readKept(*this, filer) : status;
}
Mx::ErrorStatus KeptEntity::dwgOutFields(MxDbDwgFiler* filer) const {
    const auto status = MxDbEntity::dwgOutFields(filer);
    return status == Mx::eOk ? writeKept(*this, filer) : status;
}
Mx::ErrorStatus KeptEntity::dxfOutFields(MxDbDxfFiler* filer) const {
    return writeTags(dxfTags, filer);
}
Mx::ErrorStatus KeptObject::dwgInFields(MxDbDwgFiler* filer) {
    const auto status = MxDbObject::dwgInFields(filer);
    return status == Mx::eOk ? readKept(*this, filer) : status;
}
Mx::ErrorStatus KeptObject::dwgOutFields(MxDbDwgFiler* filer) const {
    const auto status = MxDbObject::dwgOutFields(filer);
    return status == Mx::eOk ? writeKept(*this, filer) : status;
}
Mx::ErrorStatus KeptObject::dxfOutFields(MxDbDxfFiler* filer) const {
    return writeTags(dxfTags, filer);
}

} // namespace merix::db
