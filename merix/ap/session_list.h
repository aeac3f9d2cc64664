// SPDX-License-Identifier: MIT
// What a running program has put aside of its drawings, in a file that outlives it: the next start finds there what a
// dead one could not save. One file a process, in the user's data folder, locked for as long as the process lives.
#pragma once

#include <QDateTime>
#include <QString>

#include <vector>

namespace merix::ap {

/// A copy of a drawing that a program left behind.
struct Recovery {
    QString copy;    ///< the file that holds it
    QString drawing; ///< the drawing's path; empty when it was never saved
    QString title;   ///< for the user
    QDateTime made;  ///< when the copy was written
    bool operator==(const Recovery&) const = default;
};

class SessionList {
public:
    static SessionList& instance();
    ~SessionList();

    /// Writes down that `copy` holds the drawing. False when there is no place to write to.
    bool add(const QString& copy, const QString& drawing, const QString& title);
    /// Forgets a copy; the list goes with its last entry.
    void remove(const QString& copy);

    /// Copies that programs left behind which are no longer running, newer than the drawings they are of, oldest
    /// first. Lists with nothing of that kind left are deleted.
    static std::vector<Recovery> leftBehind();

private:
    SessionList() = default;
    bool open();
    bool write();

    QString m_path;
    int m_file = -1; ///< open and locked once something was added
    std::vector<Recovery> m_entries;
};

} // namespace merix::ap
