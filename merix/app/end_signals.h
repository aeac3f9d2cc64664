// SPDX-License-Identifier: MIT
// SIGTERM, SIGHUP and SIGINT end the program in order: unsaved work is put aside and kept for the next start, what is
// under way is cancelled, modules are unloaded, and then the process ends by the signal, as shells and parents expect.
// A second one ends it at once.
#pragma once

#include <QObject>

class QSocketNotifier;

namespace merix::app {

class EndSignals : public QObject {
    Q_OBJECT
public:
    /// From now on; a signal that was ignored when the program was started stays so. There is one at a time.
    explicit EndSignals(QObject* parent = nullptr);
    ~EndSignals() override;

    /// The signal that ends the program; 0 for none.
    static int received();
    /// Ends the process by the signal that was received; returns when there was none.
    static void leave();

private:
    void end();
    int m_pipe[2] = {-1, -1};
    QSocketNotifier* m_notifier = nullptr;
};

} // namespace merix::app
