// SPDX-License-Identifier: MIT
// A list is a text: "merix copies 1", then for each copy three lines, the copy's path, the drawing's and the title,
// percent-encoded so that a line holds any name.
#include "merix/ap/session_list.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <set>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace merix::ap {

namespace {

constexpr const char* kHead = "merix copies 1";
/// A list is small: a drawing is three paths.
constexpr qint64 kLongestList = 1 << 20;

QString folder() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/recovery");
}

QByteArray encoded(const QString& text) {
    return QUrl::toPercentEncoding(text, " /:");
}

QString decoded(const QByteArray& line) {
    return QUrl::fromPercentEncoding(line);
}

std::vector<Recovery> parse(const QByteArray& text) {
    std::vector<Recovery> entries;
    const QList<QByteArray> lines = text.split('\n');
    if (lines.front() != kHead)
        return entries;
    for (int i = 1; i + 2 < lines.size(); i += 3) {
        Recovery entry{decoded(lines[i]), decoded(lines[i + 1]), decoded(lines[i + 2]), {}};
        const QFileInfo copy(entry.copy), drawing(entry.drawing);
        if (entry.copy.isEmpty() || !copy.isFile())
            continue;
        entry.made = copy.lastModified();
        if (entry.drawing.isEmpty() || !drawing.exists() || drawing.lastModified() <= entry.made)
            entries.push_back(std::move(entry));
    }
    return entries;
}

} // namespace

SessionList& SessionList::instance() {
    static SessionList list;
    return list;
}

/// A process that ends in order leaves no list unless copies still matter.
SessionList::~SessionList() {
    if (m_file >= 0)
        ::close(m_file);
}

bool SessionList::open() {
    if (m_file >= 0)
        return true;
    if (!QDir().mkpath(folder()))
        return false;
    // Process ids come round again; a list that is there under this one's name belongs to a dead process.
    for (int n = 0; n < 1000; ++n) {
        m_path = QStringLiteral("%1/session-%2-%3.list").arg(folder()).arg(::getpid()).arg(n);
        const int file = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (file < 0)
            continue;
        // Somebody who looks for lists may have met this one before it was locked, and deleted it as an empty one.
        struct stat now = {};
        if (::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fstat(file, &now) == 0 && now.st_nlink > 0) {
            m_file = file;
            return true;
        }
        ::close(file);
    }
    return false;
}

bool SessionList::write() {
    QByteArray text = kHead;
    for (const Recovery& entry : m_entries)
        text += '\n' + encoded(entry.copy) + '\n' + encoded(entry.drawing) + '\n' + encoded(entry.title);
    text += '\n';
    // In place: the lock is on this file. A list cut short by a crash loses at most its last entry.
    return ::pwrite(m_file, text.constData(), std::size_t(text.size()), 0) == text.size() &&
           ::ftruncate(m_file, text.size()) == 0 && ::fsync(m_file) == 0;
}

bool SessionList::add(const QString& copy, const QString& drawing, const QString& title) {
    if (!open())
        return false;
    std::erase_if(m_entries, [&](const Recovery& entry) { return entry.copy == copy; });
    m_entries.push_back({copy, drawing, title, {}});
    return write();
}

void SessionList::remove(const QString& copy) {
    if (std::erase_if(m_entries, [&](const Recovery& entry) { return entry.copy == copy; }) == 0)
        return;
    if (!m_entries.empty()) {
        write();
        return;
    }
    QFile::remove(m_path);
    ::close(m_file);
    m_file = -1;
}

std::vector<Recovery> SessionList::leftBehind() {
    std::vector<Recovery> found;
    std::set<QString> held; // by programs that are at work
    const QDir lists(folder());
    for (const QString& name : lists.entryList({QStringLiteral("session-*.list")}, QDir::Files)) {
        const QString path = lists.filePath(name);
        QFile file(path);
        if (!file.open(QFile::ReadOnly))
            continue;
        const std::vector<Recovery> entries =
            file.size() <= kLongestList ? parse(file.readAll()) : std::vector<Recovery>();
        if (::flock(file.handle(), LOCK_SH | LOCK_NB) != 0) {
            for (const Recovery& entry : entries)
                held.insert(entry.copy);
            continue;
        }
        if (entries.empty())
            QFile::remove(path);
        for (const Recovery& entry : entries)
            if (std::none_of(found.begin(), found.end(),
                             [&](const Recovery& known) { return known.copy == entry.copy; }))
                found.push_back(entry);
    }
    std::erase_if(found, [&](const Recovery& entry) { return held.contains(entry.copy); });
    std::stable_sort(found.begin(), found.end(), [](const Recovery& a, const Recovery& b) { return a.made < b.made; });
    return found;
}

} // namespace merix::ap
