// SPDX-License-Identifier: MIT
// A list is a text: "merix copies 1", then for each copy four lines, the copy's path, the drawing's, the title
// (percent- encoded so that a line holds any name) and the hash of the drawing's file, then "end". It is written over
// the one before it, in place, as the lock is on this file; what a process that dies meanwhile leaves of the one before
// stands behind "end".
#include "merix/ap/session_list.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace merix::ap {

namespace {

constexpr const char* kHeadLine = "merix copies 1\n";
constexpr const char* kEnd = "end";
/// A list is small: a drawing is three paths.
constexpr qint64 kLongestList = 1 << 20;

QByteArray encoded(const QString& text) {
    return QUrl::toPercentEncoding(text, " /:");
}

QString decoded(const QByteArray& line) {
    return QUrl::fromPercentEncoding(line);
}

/// Tells whether a file is the same as it was; empty when it cannot be read.
QByteArray hashOf(const QString& path) {
    if (path.isEmpty())
        return {};
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha1);
    return file.open(QFile::ReadOnly) && hash.addData(&file) ? hash.result().toHex() : QByteArray();
}

/// What is in the drawing's file is older than the copy. A save that died half way leaves a file with a later time, and
/// so does the roll back of what it wrote: the content is then what it was when the copy was made.
bool isWorthMore(const QFileInfo& copy, const QString& drawing, const QByteArray& hashThen) {
    return isNewer(copy, drawing) || QFileInfo(drawing + QStringLiteral("-journal")).size() > 0 ||
           (!hashThen.isEmpty() && hashOf(drawing) == hashThen);
}

/// An entry as it stands in a list.
struct Listed {
    Recovery recovery;
    QByteArray hashThen;
};

std::vector<Listed> parse(const QByteArray& text) {
    std::vector<Listed> entries;
    const QList<QByteArray> lines = text.split('\n');
    for (int i = 1; i + 3 < lines.size() && lines[i] != kEnd; i += 4)
        entries.push_back({{decoded(lines[i]), decoded(lines[i + 1]), decoded(lines[i + 2]), {}}, lines[i + 3]});
    return entries;
}

enum class Worth {
    kOffer,
    kLater, ///< the copy's folder is not there now; it may be with its disk
    kNone,
};

Worth worthOf(const Listed& entry) {
    const QFileInfo copy(entry.recovery.copy);
    if (!entry.recovery.copy.endsWith(copySuffix()))
        return Worth::kNone; // whoever discards a copy must not be led to another file
    if (!copy.isFile())
        return QFileInfo(copy.path()).isDir() ? Worth::kNone : Worth::kLater;
    return isWorthMore(copy, entry.recovery.drawing, entry.hashThen) ? Worth::kOffer : Worth::kNone;
}

} // namespace

const QString& copySuffix() {
    static const QString suffix = QStringLiteral(".ms$");
    return suffix;
}

QString recoveryFolder() {
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/recovery");
    return QDir().mkpath(folder) ? folder : QString();
}

bool isNewer(const QFileInfo& copy, const QString& drawing) {
    const QFileInfo known(drawing);
    return drawing.isEmpty() || !known.exists() || known.lastModified() <= copy.lastModified();
}

bool lockNewList(int file) {
    struct stat status {};
    return ::flock(file, LOCK_EX) == 0 && ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

SessionList& SessionList::instance() {
    static SessionList list;
    return list;
}

/// A process that ends in order leaves no list unless copies still matter.
SessionList::~SessionList() {
    close();
}

bool SessionList::open() {
    if (m_file >= 0)
        return true;
    const QString folder = recoveryFolder();
    if (folder.isEmpty())
        return false;
    // Process ids come round again; a list that is there under this one's name belongs to a dead process.
    for (int n = 0; n < 1000; ++n) {
        m_path = QStringLiteral("%1/session-%2-%3.list").arg(folder).arg(::getpid()).arg(n);
        m_file = ::open(QFile::encodeName(m_path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (m_file < 0 && errno != EEXIST)
            return false;
        if (m_file >= 0 && lockNewList(m_file))
            return true;
        const bool isMade = m_file >= 0;
        close();
        if (isMade && QFile::remove(m_path))
            return false; // the file system has no locks
        // Another program had the name, or took the empty list for one left behind and deleted it.
    }
    return false;
}

void SessionList::close() {
    if (m_file >= 0)
        ::close(m_file);
    m_file = -1;
}

bool SessionList::write() {
    QByteArray text = kHeadLine;
    for (const Entry& entry : m_entries)
        text += encoded(entry.copy) + '\n' + encoded(entry.drawing) + '\n' + encoded(entry.title) + '\n' + entry.hash +
                '\n';
    text += QByteArray(kEnd) + '\n';
    return ::pwrite(m_file, text.constData(), std::size_t(text.size()), 0) == text.size() &&
           ::ftruncate(m_file, text.size()) == 0 && ::fsync(m_file) == 0;
}

bool SessionList::add(const QString& copy, const QString& drawing, const QString& title) {
    if (!open())
        return false;
    Entry entry{copy, drawing, title, QFileInfo(drawing).lastModified(), QFileInfo(drawing).size(), {}};
    const auto known = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.copy == copy; });
    const bool same = known != m_entries.end() && known->drawing == drawing && known->saved == entry.saved &&
                      known->size == entry.size;
    entry.hash = same ? known->hash : hashOf(drawing);
    if (known != m_entries.end())
        m_entries.erase(known);
    m_entries.push_back(std::move(entry));
    return write();
}

void SessionList::remove(const QString& copy) {
    if (std::erase_if(m_entries, [&](const Entry& entry) { return entry.copy == copy; }) == 0)
        return;
    if (!m_entries.empty()) {
        write();
        return;
    }
    QFile::remove(m_path);
    close();
}

void SessionList::readAll(std::vector<Recovery>& left, std::set<QString>& held) {
    const QString folder = recoveryFolder();
    if (folder.isEmpty())
        return;
    const QDir lists(folder);
    for (const QString& name : lists.entryList({QStringLiteral("session-*.list")}, QDir::Files)) {
        const QString path = lists.filePath(name);
        QFile file(path);
        if (!file.open(QFile::ReadOnly))
            continue;
        const bool isLocked = ::flock(file.handle(), LOCK_SH | LOCK_NB) == 0;
        const bool isHeld = !isLocked && errno == EWOULDBLOCK;
        const QByteArray text = file.size() <= kLongestList ? file.readAll() : QByteArray();
        if (file.size() > 0 && !text.startsWith(kHeadLine))
            continue; // of another version, or nobody's
        bool isOver = isLocked;
        for (Listed& entry : parse(text)) {
            if (isHeld) {
                held.insert(entry.recovery.copy); // whether or not it is there yet, whatever it is worth
                continue;
            }
            const Worth worth = worthOf(entry);
            isOver = isOver && worth == Worth::kNone;
            const auto isSame = [&](const Recovery& known) { return known.copy == entry.recovery.copy; };
            if (worth != Worth::kOffer || std::any_of(left.begin(), left.end(), isSame))
                continue;
            entry.recovery.made = QFileInfo(entry.recovery.copy).lastModified();
            left.push_back(std::move(entry.recovery));
        }
        if (isOver)
            QFile::remove(path);
    }
}

std::vector<Recovery> SessionList::leftBehind() {
    std::vector<Recovery> found;
    std::set<QString> held; // by programs that are at work
    readAll(found, held);
    std::erase_if(found, [&](const Recovery& entry) { return held.contains(entry.copy); });
    std::stable_sort(found.begin(), found.end(), [](const Recovery& a, const Recovery& b) { return a.made < b.made; });
    return found;
}

bool SessionList::isHeld(const QString& copy) {
    std::vector<Recovery> left;
    std::set<QString> held;
    readAll(left, held);
    return held.contains(copy);
}

bool SessionList::isListed(const QString& copy) {
    std::vector<Recovery> left;
    std::set<QString> held;
    readAll(left, held);
    return held.contains(copy) ||
           std::any_of(left.begin(), left.end(), [&](const Recovery& entry) { return entry.copy == copy; });
}

} // namespace merix::ap
