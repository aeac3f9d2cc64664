// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace merix::app {

/// The lines of a script. While the next line of standard input or a pipe has not come, the event loop runs.
class LineReader {
public:
    LineReader() = default;
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// `-` is standard input. Empty, or one line that says why the file cannot be read.
    QString open(const QString& path);
    /// False at the end.
    bool next(QString& line);
    int lineNumber() const { return m_line; }

private:
    bool fill();

    int m_file = -1;
    bool m_owned = false;
    bool m_ended = false;
    QByteArray m_buffer;
    int m_line = 0;
};

} // namespace merix::app
