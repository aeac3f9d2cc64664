// SPDX-License-Identifier: MIT
// What a running program has put aside of its drawings, in a file that outlives it: the next start finds there what a
// dead one could not save. One file a process, in the user's data folder, locked for as long as the process lives.
#pragma once

#include <QDateTime>
#include <QFileInfo>
#include <QString>

#include <set>
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

/// What the name of every copy ends in: ".ms$".
const QString& copySuffix();
/// Where lists are, and the copies that can stand nowhere else; made when it is missing. Empty when it cannot be.
QString recoveryFolder();
/// The copy is not older than the drawing's file (a path; empty: there is none).
bool isNewer(const QFileInfo& copy, const QString& drawing);

/// Locks the file of a list that was just made, before anything is written. False when another program has met it
/// unlocked meanwhile and deleted it as one left behind.
bool lockNewList(int file);

class SessionList {
public:
    static SessionList& instance();
    ~SessionList();

    /// Writes down that `copy` holds the drawing. False when there is no place to write to.
    bool add(const QString& copy, const QString& drawing, const QString& title);
    /// Forgets a copy; the list goes with its last entry.
    void remove(const QString& copy);

    /// Copies that programs left behind which are no longer running, oldest first; those only that hold more than the
    /// drawings they are of: newer, or the drawing is what it was when they were made. Lists of which nothing of that
    /// kind is left, or can come back with a folder that is not there now, are deleted.
    static std::vector<Recovery> leftBehind();
    /// A copy of this path belongs to a running program, this one or another, be it written yet or not.
    static bool isHeld(const QString& copy);
    /// It is held, or a program that is no longer running left it and it holds more than its drawing.
    static bool isListed(const QString& copy);

private:
    /// What was put aside, and what the drawing's file was then.
    struct Entry {
        QString copy, drawing, title;
        QDateTime saved; ///< the file's time; with its size it says that the hash still holds
        qint64 size;
        QByteArray hash;
    };
    SessionList() = default;
    /// Adds what dead programs left, and what others hold.
    static void readAll(std::vector<Recovery>& left, std::set<QString>& held);
    bool open();
    bool write();
    void close();

    QString m_path;
    int m_file = -1; ///< open and locked once something was added
    std::vector<Entry> m_entries;
};

} // namespace merix::ap
