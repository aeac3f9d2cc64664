// SPDX-License-Identifier: MIT
// Copies of changed drawings, made while they are worked on, and the way back to them after the program died. Main
// thread only.
#pragma once

#include "merix/ap/document_imp.h"
#include "merix/ap/session_list.h"

#include <QTimer>

#include <map>

namespace merix::ap {

class Autosave : public QObject {
    Q_OBJECT
public:
    static Autosave& instance();

    /// A copy is made when a drawing has had unsaved changes for this many minutes, and again after as many minutes of
    /// further change. 0: never. The variable SAVETIME unless set.
    double interval() const { return m_minutes; }
    void setInterval(double minutes);

    /// Makes a copy of every drawing with changes that no file holds; beginSave is told of each. Returns the paths.
    QStringList saveNow();

    /// Where the first copy of a drawing goes: its path with `.ms$` added, in the user's data folder for a drawing
    /// never saved or in a folder that cannot be written; with a number when a copy that another run left, or makes,
    /// stands there. Empty when there is no place.
    QString copyPath(const Document& document) const;

    /// Opens a copy as the drawing that it is of, with changes to save. The copy stays until that drawing is saved or
    /// closed.
    Result recover(const Recovery& recovery);
    /// Deletes a copy.
    void discard(const Recovery& recovery);

Q_SIGNALS:
    /// A copy could not be made; one line that says why. Told once for each drawing.
    void failed(const QString& message);

private:
    Autosave();
    void watch(Document* document);
    void forget(Document* document);
    void look();
    bool copy(Document& document);

    struct State {
        quint64 copied = 0;    ///< Document::changes() when the copy was made or the drawing was saved
        qint64 changedAt = -1; ///< of the clock: the first change since; -1 when there is none
        QString path;          ///< of the copy that exists
        bool failed = false;
    };
    bool fail(State& state, const QString& why);

    std::map<Document*, State> m_states;
    QTimer m_timer;
    double m_minutes = 0.0;
};

} // namespace merix::ap
