// SPDX-License-Identifier: MIT
#include "merix/ap/drawing_difference.h"

#include "merix/db/database_imp.h"
#include "merix/db/entities.h"
#include "merix/db/tables.h"

#include <QStringList>

namespace merix::ap {

namespace {

QString kindOf(const MxDbObject& object) {
    if (!object.data().isEntity)
        return QStringLiteral("other");
    if (object.isKindOf(db::KeptEntity::desc()))
        return QString::fromStdString(static_cast<const db::KeptEntity&>(object).dxfName);
    return QString::fromWCharArray(object.isA()->dxfName());
}

/// The record as it came, while it is still that.
std::string_view sourceOf(const MxDbObject& object) {
    const db::ObjectData& data = object.data();
    return data.sourceStale ? std::string_view() : data.source.text;
}

/// Containers differ with what is in them, which is counted itself.
bool isContainer(const MxDbObject& object) {
    return object.isKindOf(MxDbBlockTableRecord::desc()) || object.isKindOf(MxDbDictionary::desc()) ||
           object.isKindOf(db::SymbolTable::desc());
}

bool same(const MxDbObject& a, const MxDbObject& b) {
    if (!sourceOf(a).empty() && !sourceOf(b).empty())
        return sourceOf(a) == sourceOf(b);
    return db::dwgImage(a, MxDbFilerType::kFile) == db::dwgImage(b, MxDbFilerType::kFile);
}

MxDbObject* resident(db::DatabaseImp& database, MxDbHandle handle) {
    db::ObjectStub* stub = database.find(handle);
    return stub ? db::DatabaseImp::peek(MxDbObjectId(stub)) : nullptr;
}

QString listed(const std::map<QString, int>& kinds, const char* what) {
    QStringList parts;
    for (const auto& [kind, count] : kinds)
        parts << QStringLiteral("%1 %2").arg(count).arg(kind);
    return parts.isEmpty() ? QString() : parts.join(QStringLiteral(", ")) + QLatin1Char(' ') + QLatin1String(what);
}

} // namespace

DrawingDifference compareDrawings(MxDbDatabase& before, MxDbDatabase& after) {
    DrawingDifference difference;
    for (const db::ObjectStub& stub : after.imp().stubs()) {
        const MxDbObject* now = stub.erased ? nullptr : stub.object;
        if (!now || stub.handle.isNull() || isContainer(*now))
            continue;
        const MxDbObject* then = resident(before.imp(), stub.handle);
        if (!then)
            ++difference.added[kindOf(*now)];
        else if (!same(*then, *now))
            ++difference.changed[kindOf(*now)];
    }
    for (const db::ObjectStub& stub : before.imp().stubs())
        if (stub.object && !stub.erased && !stub.handle.isNull() && !isContainer(*stub.object) &&
            !resident(after.imp(), stub.handle))
            ++difference.erased[kindOf(*stub.object)];
    return difference;
}

QString DrawingDifference::text() const {
    QStringList parts{listed(added, "added"), listed(changed, "changed"), listed(erased, "erased")};
    parts.removeAll(QString());
    return parts.isEmpty() ? QStringLiteral("nothing changed") : parts.join(QStringLiteral("; "));
}

} // namespace merix::ap
