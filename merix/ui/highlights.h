// SPDX-License-Identifier: MIT
// Which entities of one drawing are shown as meant: those that a command or a module highlights.
#pragma once

#include "merix/db/database_imp.h"

#include <QObject>

#include <set>

namespace merix::ui {

/// Lives as long as its drawing is shown in a tab. What is erased also leaves the selection here.
class Highlights : public QObject, private db::DatabaseListener {
    Q_OBJECT
public:
    explicit Highlights(MxDbDatabase& database);
    ~Highlights() override;

    const std::set<MxDbObjectId>& ids() const { return m_ids; }

Q_SIGNALS:
    void changed();

private:
    void entityHighlighted(MxDbObject& entity, bool highlighted) override;
    void objectErased(MxDbObject& object, bool erasing) override;

    db::DatabaseImp& m_database;
    std::set<MxDbObjectId> m_ids;
};

} // namespace merix::ui
