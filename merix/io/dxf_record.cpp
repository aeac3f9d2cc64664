// SPDX-License-Identifier: MIT
#include "merix/io/dxf_record.h"

#include "merix/db/access.h"
#include "merix/db/entities.h"
#include "merix/db/kept_records.h"
#include "merix/db/tables.h"
#include "merix/io/dxf_in_filer.h"
#include "merix/io/dxf_merge.h"
#include "merix/io/dxf_split.h"
#include "merix/io/dxf_value.h"
#include "merix/rx/class_registry.h"

#include <algorithm>
#include <array>

namespace merix::io {
namespace {

using Place = RecordPlace;

/// Subclasses of kinds: what records of old versions, which have no markers, are read as.
struct OldKind {
    std::string_view name;
    bool entity;
    std::array<std::string_view, 2> subclasses;
};
constexpr std::array<OldKind, 8> kOldKinds = {
    {{"LINE", true, {"AcDbLine", ""}},
     {"CIRCLE", true, {"AcDbCircle", ""}},
     {"ARC", true, {"AcDbCircle", "AcDbArc"}},
     {"TEXT", true, {"AcDbText", "AcDbText"}},
     {"INSERT", true, {"AcDbBlockReference", ""}},
     {"LAYER", false, {"AcDbSymbolTableRecord", "AcDbLayerTableRecord"}},
     {"LTYPE", false, {"AcDbSymbolTableRecord", "AcDbLinetypeTableRecord"}},
     {"STYLE", false, {"AcDbSymbolTableRecord", "AcDbTextStyleTableRecord"}}}};

const OldKind* oldKind(std::string_view name) {
    const auto* found =
        std::find_if(kOldKinds.begin(), kOldKinds.end(), [name](const OldKind& kind) { return kind.name == name; });
    return found == kOldKinds.end() ? nullptr : found;
}

bool isCommonEntityCode(int code) {
    static constexpr std::array<int, 14> kCodes = {6, 8, 48, 60, 62, 67, 284, 347, 348, 370, 390, 420, 430, 440};
    return std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end();
}

bool belongsToSecondSubclass(std::string_view name, int code) {
    return (name == "ARC" && (code == 50 || code == 51)) || (name == "TEXT" && code == 73);
}

/// Gives the tags of a record without subclass markers the order and the markers of later versions.
std::vector<DxfTag> withMarkers(const std::vector<DxfTag>& tags, const OldKind& kind) {
    std::vector<DxfTag> result, second;
    const auto mark = [](std::string_view subclass) { return DxfTag{100, subclass, {}}; };
    const bool entity = kind.entity;
    if (entity)
        result.push_back(mark("AcDbEntity"));
    for (const DxfTag& tag : tags) {
        if (entity && isCommonEntityCode(tag.code))
            result.push_back(tag);
    }
    result.push_back(mark(kind.subclasses[0]));
    if (!entity && !kind.subclasses[1].empty())
        result.push_back(mark(kind.subclasses[1]));
    for (const DxfTag& tag : tags) {
        if (entity && isCommonEntityCode(tag.code))
            continue;
        (belongsToSecondSubclass(kind.name, tag.code) ? second : result).push_back(tag);
    }
    if (entity && !kind.subclasses[1].empty())
        result.push_back(mark(kind.subclasses[1]));
    result.insert(result.end(), second.begin(), second.end());
    return result;
}

/// The tags that a class reads: those of the first record from its first subclass marker on, without comments,
/// extended data and application groups.
std::vector<DxfTag> fieldsOf(std::string_view text) {
    DxfScanner scanner(text);
    DxfTag tag;
    std::vector<DxfTag> tags;
    std::string_view name;
    bool marked = false, inGroup = false;
    for (bool first = true; scanner.next(tag) == DxfScanner::Result::kTag; first = false) {
        if (tag.code == 0) {
            if (!first)
                break;
            name = trimmed(tag.value);
            continue;
        }
        if (tag.code == 100 && !marked) {
            marked = true;
            tags.clear();
        }
        if (tag.code == 999 || (tag.code >= 1000 && tag.code < 1072) || tag.code == 101) {
            if (tag.code == 101)
                break;
            continue;
        }
        if (!marked && tag.code == 102) {
            inGroup = trimmed(tag.value).starts_with("{");
            continue;
        }
        if (!marked && (inGroup || tag.code == 5 || tag.code == 105 || tag.code == 330))
            continue;
        if (name == "TABLE" && tag.code == 2)
            continue;
        tags.push_back(tag);
    }
    const OldKind* kind = oldKind(name);
    return !marked && kind ? withMarkers(tags, *kind) : tags;
}

std::string describe(const DxfInFiler& filer, Mx::ErrorStatus status) {
    std::string text = toUtf8(filer.message());
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    text = std::string(trimmed(text));
    if (text.empty() && status == Mx::eNewerVersion)
        text = "it was written by a later version";
    return (text.empty() ? std::string() : text + ", ") + "status " + std::to_string(static_cast<int>(status));
}

/// Fills `object` in; a text that says why not, else empty.
std::string fillIn(MxDbObject& object, MxDbDatabase& database, const DxfEncoding& encoding, std::string_view text) {
    const std::vector<DxfTag> tags = fieldsOf(text);
    DxfInFiler filer(database, encoding, tags);
    Mx::ErrorStatus status = object.dxfInFields(&filer);
    if (status == Mx::eOk)
        status = filer.filerStatus();
    return status == Mx::eOk ? std::string() : describe(filer, status);
}

/// The class that reads records of that name where they stand, null when there is none.
MxRxClass* classFor(std::string_view name, RecordPlace place) {
    MxRxClass* found = name.empty() ? nullptr : rx::findClassByDxfName(fromUtf8(name));
    if (!found || !found->isDerivedFrom(MxDbObject::desc()))
        return nullptr;
    const bool entity = found->isDerivedFrom(MxDbEntity::desc());
    const bool tableRecord =
        found->isDerivedFrom(db::SymbolRecord::desc()) || found->isDerivedFrom(MxDbBlockTableRecord::desc());
    const bool fits = place == Place::kEntity        ? entity
                      : place == Place::kTableRecord ? tableRecord
                                                     : place == Place::kObject && !entity && !tableRecord;
    return fits ? found : nullptr;
}

std::unique_ptr<MxDbObject> create(std::string_view name, RecordPlace place) {
    if (place == Place::kTable)
        return std::make_unique<db::SymbolTable>();
    MxRxClass* aClass = classFor(name, place);
    return std::unique_ptr<MxDbObject>(aClass ? static_cast<MxDbObject*>(aClass->create()) : nullptr);
}

/// Texts that the program itself keeps in DXF form have this encoding.
const DxfEncoding& keptEncoding() {
    static const DxfEncoding encoding("AC1021", "");
    return encoding;
}

const std::string* keptTags(const MxDbObject& object) {
    if (object.isA() == db::KeptEntity::desc())
        return &static_cast<const db::KeptEntity&>(object).dxfTags;
    return object.isA() == db::KeptObject::desc() ? &static_cast<const db::KeptObject&>(object).dxfTags : nullptr;
}

bool isErased(MxDbObjectId id) {
    return id.stub() && id.stub()->object && id.stub()->erased;
}

std::vector<std::uint64_t> handlesIn(std::string_view text, std::string_view group) {
    DxfScanner scanner(text);
    DxfTag tag;
    std::vector<std::uint64_t> handles;
    bool inside = false;
    for (bool first = true; scanner.next(tag) == DxfScanner::Result::kTag; first = false) {
        if ((tag.code == 0 && !first) || tag.code == 100)
            break;
        if (tag.code == 102)
            inside = trimmed(tag.value) == group;
        else if (inside && dxfKind(tag.code) == DxfKind::kHandle && toHandle(tag.value) != 0)
            handles.push_back(toHandle(tag.value));
    }
    return handles;
}

} // namespace

bool isModuleClass(const MxRxClass* aClass) {
    return aClass && *aClass->appName() != L'\0';
}

bool isModuleRecord(std::string_view name, RecordPlace place) {
    return place != RecordPlace::kTable && isModuleClass(classFor(name, place));
}

DxfObject makeDxfObject(MxDbDatabase& database, const DxfEncoding& encoding, std::string_view text, RecordPlace place) {
    DxfObject result;
    const DxfRecord head = readHead(text);
    result.object = create(head.name, place);
    if (result.object) {
        if (place == Place::kTable)
            static_cast<db::SymbolTable&>(*result.object).dxfType = trimmed(head.subject);
        result.refusal = fillIn(*result.object, database, encoding, text);
        if (result.refusal.empty())
            return result;
    }
    result.object = makeKeptObject(database, encoding, text, place);
    return result;
}

std::unique_ptr<MxDbObject> makeKeptObject(MxDbDatabase& database, const DxfEncoding& encoding, std::string_view text,
                                           RecordPlace place) {
    const std::string name(readHead(text).name);
    const MxRxClass* aClass = classFor(name, place);
    const std::vector<DxfTag> tags = fieldsOf(text);
    DxfInFiler filer(database, encoding, tags);
    const auto keep = [&](auto kept) -> std::unique_ptr<MxDbObject> {
        kept->dxfName = name;
        if (isModuleClass(aClass))
            kept->className = aClass->name();
        return kept;
    };
    if (place != Place::kEntity)
        return keep(std::make_unique<db::KeptObject>());
    auto entity = std::make_unique<db::KeptEntity>();
    // What every entity has: its layer decides whether it may be touched. The class itself is not asked.
    entity->MxDbEntity::dxfInFields(&filer);
    return keep(std::move(entity));
}

std::unique_ptr<MxDbObject> makeTwin(const MxDbObject& object, const DxfEncoding& encoding, std::string_view text) {
    std::unique_ptr<MxDbObject> twin(static_cast<MxDbObject*>(object.isA()->create()));
    if (!twin)
        return nullptr;
    if (object.isKindOf(db::SymbolTable::desc())) {
        // A table says how many records it has; that number is a hint which the file may keep.
        static_cast<db::SymbolTable&>(*twin).dxfType = static_cast<const db::SymbolTable&>(object).dxfType;
        static_cast<db::SymbolTable&>(*twin).records = static_cast<const db::SymbolTable&>(object).records;
    }
    if (keptTags(object)) {
        if (!object.data().isEntity || !keptTags(object)->empty())
            return nullptr;
        const std::vector<DxfTag> tags = fieldsOf(text);
        DxfInFiler filer(*object.database(), encoding, tags);
        const auto status = static_cast<MxDbEntity&>(*twin).MxDbEntity::dxfInFields(&filer);
        return status == Mx::eOk ? std::move(twin) : nullptr;
    }
    return fillIn(*twin, *object.database(), encoding, text).empty() ? std::move(twin) : nullptr;
}

void readObjectLinks(MxDbDatabase& database, std::string_view text, db::ObjectData& data) {
    db::DatabaseImp& imp = database.imp();
    data.reactors.clear();
    for (const std::uint64_t handle : handlesIn(text, "{ACAD_REACTORS"))
        data.reactors.push_back({nullptr, MxDbObjectId(imp.reserve(MxDbHandle(handle)))});
    for (const std::uint64_t handle : handlesIn(text, "{ACAD_XDICTIONARY"))
        data.extensionDictionary = MxDbObjectId(imp.reserve(MxDbHandle(handle)));
}

std::string dxfNameOf(const MxDbObject& object) {
    if (const std::string_view name = db::keptDxfName(object); !name.empty())
        return std::string(name);
    return object.isKindOf(db::SymbolTable::desc()) ? "TABLE" : toUtf8(object.isA()->dxfName());
}

DxfImage dxfImage(const MxDbObject& object) {
    const db::ObjectData& data = object.data();
    DxfImage image;
    image.name = dxfNameOf(object);
    image.entity = data.isEntity;
    image.handle = data.stub ? data.stub->handle.value() : 0;
    image.owner = data.owner.isNull() ? 0 : data.owner.handle().value();
    // What is erased leaves the file; what was never there is not ours to judge.
    if (!data.extensionDictionary.isNull() && !isErased(data.extensionDictionary))
        image.extensionDictionary = data.extensionDictionary.handle().value();
    for (const MxDbReactorEntry& reactor : data.reactors) {
        if (mxdbIsPersistentReactor(reactor) && !isErased(reactor.persistent))
            image.reactors.push_back(reactor.persistent.handle().value());
    }
    if (object.isKindOf(db::SymbolTable::desc()))
        image.subject = static_cast<const db::SymbolTable&>(object).dxfType;
    return image;
}

namespace {

std::vector<DxfOutTag> recoded(std::string_view tags, const DxfEncoding& encoding) {
    std::vector<DxfOutTag> result;
    DxfScanner scanner(tags);
    DxfTag tag;
    while (scanner.next(tag) == DxfScanner::Result::kTag)
        result.push_back({tag.code, encoding.encode(keptEncoding().decode(tag.value))});
    return result;
}

/// The fields from the first subclass marker on; of a kept record what the host knows of it.
Mx::ErrorStatus readFields(const MxDbObject& object, MxDbDatabase& database, const DxfEncoding& encoding,
                           std::vector<DxfOutTag>& body) {
    const std::string* kept = keptTags(object);
    if (kept && !kept->empty()) {
        body = recoded(*kept, encoding);
        return Mx::eOk;
    }
    const db::ReadAccess readable(object);
    DxfOutFiler filer(database, encoding);
    Mx::ErrorStatus status = Mx::eOk;
    if (!kept)
        status = object.dxfOutFields(&filer);
    else if (object.data().isEntity)
        status = static_cast<const MxDbEntity&>(object).MxDbEntity::dxfOutFields(&filer);
    if (status == Mx::eOk)
        status = filer.filerStatus();
    body = filer.takeTags();
    const auto first = std::find_if(body.begin(), body.end(), [](const DxfOutTag& tag) { return tag.code == 100; });
    body.erase(body.begin(), first);
    return status;
}

/// The tags of `old` in the subclasses that `now` has: what stands for the fields of a class that cannot be asked.
std::vector<DxfOutTag> sectionsAlsoIn(const std::vector<DxfOutTag>& now, const std::vector<DxfTag>& old) {
    std::vector<DxfOutTag> result;
    bool inside = false;
    for (const DxfTag& tag : old) {
        if (tag.code == 100)
            inside = std::any_of(now.begin(), now.end(), [&](const DxfOutTag& marker) {
                return marker.code == 100 && marker.value == trimmed(tag.value);
            });
        if (inside)
            result.push_back({tag.code, std::string(tag.value)});
    }
    return result;
}

void appendHandles(std::string& text, std::string_view group, int code, const std::vector<std::uint64_t>& handles,
                   std::string_view lineEnd) {
    if (handles.empty())
        return;
    appendTag(text, 102, group, lineEnd);
    for (const std::uint64_t handle : handles)
        appendTag(text, code, fromHandle(handle), lineEnd);
    appendTag(text, 102, "}", lineEnd);
}

} // namespace

std::string linkGroups(const DxfImage& image, bool extension, bool reactors, std::string_view lineEnd) {
    std::string text;
    if (extension && image.extensionDictionary != 0)
        appendHandles(text, "{ACAD_XDICTIONARY", 360, {image.extensionDictionary}, lineEnd);
    if (reactors)
        appendHandles(text, "{ACAD_REACTORS", 330, image.reactors, lineEnd);
    return text;
}

std::string newRecord(const DxfImage& image, const DrawingParts& parts) {
    const std::string& lineEnd = parts.lineEnd;
    std::string text;
    appendTag(text, 0, image.name, lineEnd);
    if (image.name == "TABLE")
        appendTag(text, 2, image.subject, lineEnd);
    // Old versions know neither subclasses nor owners; kinds that are younger cannot be read without them.
    const bool plain = parts.isOldVersion() && (image.name == "TABLE" || oldKind(image.name));
    if (!plain || image.entity)
        appendTag(text, 5, fromHandle(image.handle), lineEnd);
    text += linkGroups(image, true, true, lineEnd);
    if (!plain)
        appendTag(text, 330, fromHandle(image.owner), lineEnd);
    for (const DxfOutTag& tag : image.body) {
        if (tag.code != 100 || !plain)
            appendTag(text, tag.code, tag.value, lineEnd);
    }
    return text;
}

std::string currentRecord(const MxDbObject& object, const DrawingParts& parts) {
    const db::ObjectData& data = object.data();
    const DxfEncoding encoding = parts.encoding();
    MxDbDatabase& database = *object.database();
    const db::WorkingDatabaseScope working(&database);
    DxfImage now = dxfImage(object);
    const Mx::ErrorStatus status = readFields(object, database, encoding, now.body);
    if (data.source.empty())
        return status == Mx::eOk && (!now.body.empty() || !keptTags(object)) ? newRecord(now, parts) : std::string();
    if (status != Mx::eOk)
        return std::string(data.source.text);
    std::vector<DxfOutTag> before;
    if (const auto twin = makeTwin(object, encoding, data.source.text))
        readFields(*twin, database, encoding, before);
    else if (const std::string* kept = keptTags(object); kept && !kept->empty())
        before = sectionsAlsoIn(now.body, fieldsOf(data.source.text));
    return mergeRecord(data.source.text, now, before, parts);
}

std::string tagsForKeeping(const MxDbObject& object) {
    if (const std::string* kept = keptTags(object))
        return *kept;
    std::vector<DxfOutTag> body;
    std::string text;
    if (readFields(object, *object.database(), keptEncoding(), body) == Mx::eOk) {
        for (const DxfOutTag& tag : body)
            appendTag(text, tag.code, tag.value, "\n");
    }
    return text;
}

namespace {

/// For objects whose module comes back while the drawing is open.
Mx::ErrorStatus readKeptTags(const MxDbObject& kept, MxDbObject& fresh) {
    MxDbDatabase& database = *kept.database();
    const std::string* tags = keptTags(kept);
    if (tags && !tags->empty())
        return fillIn(fresh, database, keptEncoding(), *tags).empty() ? Mx::eOk : Mx::eItemUnreadable;
    const DrawingParts* parts = drawingParts(database.imp());
    const std::string_view source = kept.data().source.text;
    if (!parts || source.empty())
        return Mx::eItemUnreadable;
    return fillIn(fresh, database, parts->encoding(), source).empty() ? Mx::eOk : Mx::eItemUnreadable;
}

[[maybe_unused]] const bool g_hooksAreSet = [] {
    db::setKeptRecordHooks({tagsForKeeping, readKeptTags});
    return true;
}();

} // namespace

} // namespace merix::io
