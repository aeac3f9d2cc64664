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

    /// A copy is made when a drawing has had unsaved changes for some seconds and copies have not lately taken more
    /// than a hundredth of a processor, at the latest when it has had them for this many minutes; and again for further
    /// changes. 0: never. The variable SAVETIME unless set.
    double interval() const { return m_minutes; }
    void setInterval(double minutes);
    /// How old a change gets before it is copied, milliseconds.
    void setAge(int age);

    /// Makes a copy of every drawing with changes that no file holds; beginSave is told of each. Returns the paths.
    QStringList saveNow();

    /// Where the first copy of a drawing goes: its path with `.ms$` added, in the user's data folder for a drawing
    /// never saved or in a folder that cannot be written; with a number when a copy that another run left, or makes,
    /// or that was offered here, has that name. Empty when there is no place.
    QString copyPath(const Document& document) const;

    /// What can be recovered. Until it is recovered or discarded no copy of this run is made under these names.
    std::vector<Recovery> offer();
    /// The copy can be read, and no open drawing has it, here or in another program.
    Result check(const Recovery& recovery) const;
    /// Opens a copy as the drawing that it is of, with changes to save; as one never saved when the drawing was saved
    /// since the copy was made. The copy stays until the new one is saved or closed. A copy that is gone, or that an
    /// open drawing has, is left as it is.
    Result recover(const Recovery& recovery);
    /// Deletes a copy; not one that is gone or that an open drawing has.
    Result discard(const Recovery& recovery);
    /// From now on, as nobody sits here who could have willed it, the close of a recovered drawing that was never saved
    /// leaves its copy for the next run.
    void keepRecovered() { m_keepsRecovered = true; }
    /// Copies what no copy holds; from now on, as the program ends without having asked, the close of a drawing with
    /// unsaved changes leaves its copy for the next run.
    void keepUnsaved();

Q_SIGNALS:
    /// A copy could not be made; one line that says why. Told once for each drawing.
    void failed(const QString& message);
    /// A copy that was offered is open now, or deleted.
    void settled(const QString& copy);

private:
    Autosave();
    void watch(Document* document);
    void forget(Document* document);
    void look();
    bool isDue(const Document& document, qint64 changedAt) const;
    bool copy(Document& document);
    bool makeCopy(Document& document);

    struct State {
        quint64 copied = 0;    ///< Document::changes() when the copy was made or the drawing was saved
        qint64 changedAt = -1; ///< of the clock: the first change since; -1 when there is none
        QString path;          ///< of the copy that exists
        bool recovered = false;
        bool failed = false;
    };
    bool fail(State& state, const QString& why);
    QString freeName(const QString& stem, const QString& drawing) const;
    QString nameInRecoveryFolder(const Document& document) const;
    Result writeTo(Document& document, const QString& path, bool& isListed);
    Result checkFree(const Recovery& recovery) const;
    void settle(const QString& copy);

    std::map<Document*, State> m_states;
    QTimer m_timer;
    double m_minutes = 0.0;
    int m_age;
    qint64 m_restsUntil = 0;     ///< of the clock: copies have had their share of the processor until then
    std::set<QString> m_offered; ///< copies
    bool m_keepsRecovered = false;
    bool m_keepsUnsaved = false;
};

} // namespace merix::ap
