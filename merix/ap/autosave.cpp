// SPDX-License-Identifier: MIT
#include "merix/ap/autosave.h"

#include "merix/db/database_imp.h"
#include "merix/ed/prompter.h"
#include "merix/ed/variables.h"
#include "merix/io/drawing_file.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <ctime>

#include <unistd.h>

namespace merix::ap {

namespace {

constexpr double kMillisecondsPerMinute = 60'000.0;
/// A change is copied when it is so old, and the drawings are looked at so often, milliseconds: what is lost by a crash
/// is less than ten seconds of work.
constexpr int kAge = 4000, kLongestBetweenLooks = 1000;
/// How often the drawings are looked at: a part of the interval, so that a copy is late by no more than that.
constexpr double kLooksPerInterval = 10.0;
/// After a copy none is made for so many times the processor time that it took.
constexpr qint64 kRest = 100;

qint64 now() {
    static const QElapsedTimer clock = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return clock.elapsed();
}

/// Processor time of the whole program, milliseconds, rounded up.
qint64 processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000 + (time.tv_nsec + 999'999) / 1'000'000;
}

} // namespace

Autosave& Autosave::instance() {
    static Autosave* const autosave = new Autosave; // its timer must not outlive the application's end in a static
    return *autosave;
}

Autosave::Autosave()
    : m_age(kAge) {
    DocManager& manager = DocManager::instance();
    connect(&manager, &DocManager::documentOpened, this, &Autosave::watch);
    connect(&manager, &DocManager::documentClosing, this, &Autosave::forget);
    for (Document* document : manager.all())
        watch(document);
    connect(&m_timer, &QTimer::timeout, this, &Autosave::look);
    setInterval(ed::saveTime());
    ed::setSaveTimeListener([this](int minutes) { setInterval(minutes); });
}

void Autosave::setInterval(double minutes) {
    m_minutes = minutes;
    m_timer.stop();
    if (minutes > 0.0)
        m_timer.start(std::clamp(int(minutes * kMillisecondsPerMinute / kLooksPerInterval), 1,
                                 std::min(kLongestBetweenLooks, std::max(1, m_age))));
}

void Autosave::setAge(int age) {
    m_age = age;
    setInterval(m_minutes);
}

void Autosave::watch(Document* document) {
    m_states[document].copied = document->changes();
    connect(document, &Document::saved, this, [this, document] {
        State& state = m_states[document];
        SessionList::instance().remove(state.path);
        if (!state.path.isEmpty())
            QFile::remove(state.path);
        state = {};
        state.copied = document->changes();
    });
}

void Autosave::forget(Document* document) {
    const auto place = m_states.find(document);
    if (place == m_states.end())
        return;
    const QString path = place->second.path;
    const bool stays =
        (place->second.recovered && m_keepsRecovered) || (m_keepsUnsaved && document->isChanged() && !path.isEmpty());
    m_states.erase(place);
    if (stays)
        return;
    SessionList::instance().remove(path);
    if (!path.isEmpty())
        QFile::remove(path);
}

void Autosave::look() {
    // The one that has waited longest comes first: a share of the processor may do for one only.
    std::vector<std::pair<qint64, Document*>> changed;
    for (Document* document : DocManager::instance().all()) {
        const auto place = m_states.find(document);
        if (place == m_states.end() || place->second.copied == document->changes())
            continue;
        State& state = place->second;
        if (state.changedAt < 0)
            state.changedAt = now();
        changed.emplace_back(state.changedAt, document);
    }
    std::sort(changed.begin(), changed.end());
    for (const auto& [changedAt, document] : changed)
        if (m_states.count(document) && isDue(*document, changedAt)) // a reactor may have closed it
            copy(*document);
}

bool Autosave::isDue(const Document& document, qint64 changedAt) const {
    // Between two steps of a command the drawing is whole; within one it may not be.
    if (document.isBusy() && !ed::Prompter::instance().isWaiting())
        return false;
    const qint64 time = now(), age = time - changedAt;
    return double(age) >= m_minutes * kMillisecondsPerMinute || (age >= m_age && time >= m_restsUntil);
}

QStringList Autosave::saveNow() {
    QStringList written;
    for (Document* document : DocManager::instance().all())
        if (const auto place = m_states.find(document);
            place != m_states.end() && place->second.copied != document->changes() && copy(*document))
            written << m_states[document].path;
    return written;
}

void Autosave::keepUnsaved() {
    m_keepsUnsaved = true;
    saveNow();
}

/// One that another run left, or makes, is kept as long as it would be offered.
QString Autosave::freeName(const QString& stem, const QString& drawing) const {
    for (int n = 1; n < 1000; ++n) {
        const QString number = n == 1 ? QString() : QStringLiteral(".%1").arg(n);
        const QFileInfo known(stem + number + copySuffix());
        if ((!known.exists() || !isNewer(known, drawing)) && !m_offered.contains(known.filePath()) &&
            !SessionList::isListed(known.filePath()))
            return known.filePath();
    }
    return {};
}

QString Autosave::nameInRecoveryFolder(const Document& document) const {
    const QString folder = recoveryFolder();
    if (folder.isEmpty())
        return {};
    // Two programs may each have a "Drawing1".
    return freeName(QStringLiteral("%1/%2-%3").arg(folder, document.title()).arg(::getpid()), document.path());
}

QString Autosave::copyPath(const Document& document) const {
    const QString& path = document.path();
    if (!path.isEmpty() && QFileInfo(QFileInfo(path).absolutePath()).isWritable())
        return freeName(path, path);
    return nameInRecoveryFolder(document);
}

Result Autosave::writeTo(Document& document, const QString& path, bool& isListed) {
    const bool isNew = m_states[&document].path != path;
    // A copy of another run that the drawing has overtaken must not be taken for the one that is listed.
    if (isNew)
        QFile::remove(path);
    // The list comes first: it passes over a copy that is not there, but nobody looks for a copy that it lacks.
    isListed = SessionList::instance().add(path, document.path(), document.title());
    Result result = DocManager::instance().writeCopy(document, path);
    if (!result.ok && isNew)
        SessionList::instance().remove(path);
    return result;
}

bool Autosave::copy(Document& document) {
    const qint64 before = processorTime();
    const bool done = makeCopy(document);
    m_restsUntil = now() + kRest * (processorTime() - before);
    return done;
}

bool Autosave::makeCopy(Document& document) {
    State& state = m_states[&document];
    QString path = state.path.isEmpty() ? copyPath(document) : state.path;
    state.changedAt = -1;
    const quint64 changes = document.changes();
    if (path.isEmpty())
        return fail(state, document.title() + QStringLiteral(": no folder for a copy"));
    bool isListed = false;
    if (const Result result = writeTo(document, path, isListed); !result.ok) {
        path = nameInRecoveryFolder(document);
        if (path.isEmpty() || !writeTo(document, path, isListed).ok)
            return fail(state, result.message);
        // The copy before was good until there was this one.
        if (!state.path.isEmpty()) {
            QFile::remove(state.path);
            SessionList::instance().remove(state.path);
        }
    }
    state.copied = changes;
    state.path = path;
    if (!isListed)
        return fail(state, path + QStringLiteral(": the list of copies cannot be written, nobody will be offered it"));
    state.failed = false;
    return true;
}

bool Autosave::fail(State& state, const QString& why) {
    if (!std::exchange(state.failed, true))
        Q_EMIT failed(QStringLiteral("Automatic save: ") + why);
    return false;
}

std::vector<Recovery> Autosave::offer() {
    std::vector<Recovery> found = SessionList::leftBehind();
    for (const Recovery& recovery : found)
        m_offered.insert(recovery.copy);
    return found;
}

void Autosave::settle(const QString& copy) {
    m_offered.erase(copy);
    Q_EMIT settled(copy);
}

Result Autosave::checkFree(const Recovery& recovery) const {
    if (!QFileInfo(recovery.copy).isFile())
        return {false, recovery.copy + QStringLiteral(": this copy is not there any more")};
    const bool isOwn = std::any_of(m_states.begin(), m_states.end(),
                                   [&](const auto& state) { return state.second.path == recovery.copy; });
    if (isOwn || SessionList::isHeld(recovery.copy))
        return {false, recovery.copy + QStringLiteral(": this copy is of a drawing that is open, here or elsewhere")};
    return {};
}

Result Autosave::check(const Recovery& recovery) const {
    if (Result result = checkFree(recovery); !result.ok)
        return result;
    MxDbDatabase database;
    const db::WorkingDatabaseScope scope(&database);
    const io::FileResult read = io::readDrawing(recovery.copy.toStdString(), database);
    return read ? Result() : Result{false, recovery.copy + QStringLiteral(": the copy cannot be read")};
}

Result Autosave::recover(const Recovery& recovery) {
    if (Result result = checkFree(recovery); !result.ok)
        return result;
    const bool isOvertaken =
        !isNewer(QFileInfo(recovery.copy), recovery.drawing) && !SessionList::isListed(recovery.copy);
    const QString drawing = isOvertaken ? QString() : recovery.drawing;
    Document* document = nullptr;
    Result result = DocManager::instance().openCopy(recovery.copy, drawing, recovery.title, &document);
    if (!result.ok)
        return result;
    State& state = m_states[document];
    state.path = recovery.copy;
    state.recovered = true;
    state.copied = document->changes();
    SessionList::instance().add(recovery.copy, drawing, recovery.title);
    settle(recovery.copy);
    return result;
}

Result Autosave::discard(const Recovery& recovery) {
    if (Result result = checkFree(recovery); !result.ok)
        return result;
    if (!QFile::remove(recovery.copy))
        return {false, recovery.copy + QStringLiteral(": the copy cannot be deleted")};
    settle(recovery.copy);
    return {};
}

} // namespace merix::ap
