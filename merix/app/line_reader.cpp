// SPDX-License-Identifier: MIT
#include "merix/app/line_reader.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace merix::app {

LineReader::~LineReader() {
    if (m_owned)
        ::close(m_file);
}

QString LineReader::open(const QString& path) {
    if (path == QLatin1String("-")) {
        m_file = STDIN_FILENO;
        return {};
    }
    m_file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (m_file < 0)
        return QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
    m_owned = true;
    struct stat info {};
    if (fstat(m_file, &info) == 0 && S_ISDIR(info.st_mode))
        return QStringLiteral("%1: it is a folder").arg(path);
    return {};
}

bool LineReader::fill() {
    struct stat info {};
    if (fstat(m_file, &info) == 0 && !S_ISREG(info.st_mode)) {
        QEventLoop loop;
        QSocketNotifier notifier(m_file, QSocketNotifier::Read);
        bool ready = false;
        QObject::connect(&notifier, &QSocketNotifier::activated, &loop, [&] {
            ready = true;
            loop.quit();
        });
        loop.exec();
        if (!ready)
            return false; // the program ends
    }
    char bytes[4096];
    ssize_t count = 0;
    do
        count = ::read(m_file, bytes, sizeof bytes);
    while (count < 0 && errno == EINTR);
    if (count <= 0)
        return false;
    m_buffer.append(bytes, static_cast<int>(count));
    return true;
}

bool LineReader::next(QString& line) {
    int end = m_buffer.indexOf('\n');
    while (end < 0 && !m_ended) {
        const int searched = m_buffer.size();
        m_ended = !fill();
        end = m_buffer.indexOf('\n', searched);
    }
    if (end < 0 && m_buffer.isEmpty())
        return false;
    ++m_line;
    line = QString::fromUtf8(end < 0 ? m_buffer : m_buffer.left(end));
    if (line.endsWith(QLatin1Char('\r')))
        line.chop(1);
    m_buffer.remove(0, end < 0 ? m_buffer.size() : end + 1);
    return true;
}

} // namespace merix::app
