// SPDX-License-Identifier: MIT
// Sits inside the program and writes down what stands on its windows, so that tests by hand can wait for it: the text
// of the command history in the file `said`, all widgets in `widgets.json`, both in the folder that MERIX_WITNESS
// names. A file is old or new, never half. It only looks.
#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSaveFile>
#include <QTabBar>
#include <QTimer>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace {

void writeDown(const char* name, const QByteArray& text) {
    QSaveFile file(QString::fromLocal8Bit(qgetenv("MERIX_WITNESS")) + '/' + name);
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size())
        file.commit();
}

/// The C++ class: not every window of a module has Qt's own name of it.
QString classOf(const QWidget& widget) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(widget).name(), nullptr, nullptr, &status), &std::free);
    return QString::fromLatin1(name ? name.get() : "");
}

QString textOf(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        return label->text();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text();
    return widget.isWindow() ? widget.windowTitle() : QString();
}

QJsonObject told(const QString& kind, const QString& name, const QString& text, const QRect& place, bool isVisible) {
    return {{"class", kind},  {"name", name},       {"text", text},        {"x", place.x()},
            {"y", place.y()}, {"w", place.width()}, {"h", place.height()}, {"visible", isVisible}};
}

class Witness : public QObject {
public:
    Witness() {
        m_later.setSingleShot(true);
        connect(&m_later, &QTimer::timeout, this, [this] { lookAround(); });
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (!watched->isWidgetType())
            return false;
        switch (event->type()) {
        case QEvent::Show:
            if (auto* history = qobject_cast<QPlainTextEdit*>(watched);
                history && history->accessibleName() == "Command history")
                listen(*history);
            [[fallthrough]];
        case QEvent::Hide:
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::WindowTitleChange:
            m_later.start(0);
            break;
        case QEvent::Paint: // a text has changed, perhaps
            if (qobject_cast<QLabel*>(watched) || qobject_cast<QAbstractButton*>(watched) ||
                qobject_cast<QTabBar*>(watched))
                m_later.start(0);
            break;
        default:
            break;
        }
        return false;
    }

private:
    void listen(const QPlainTextEdit& history) {
        const auto hear = [&history] { writeDown("said", history.toPlainText().toUtf8()); };
        history.disconnect(this); // it may be shown for another time
        connect(&history, &QPlainTextEdit::textChanged, this, hear);
        hear();
    }
    void lookAround() {
        QJsonArray all;
        const QWidgetList widgets = QApplication::allWidgets();
        for (const QWidget* widget : widgets) {
            const QString name = widget->objectName().isEmpty() ? widget->accessibleName() : widget->objectName();
            const QRect place(widget->mapToGlobal(QPoint()), widget->size());
            all.append(told(classOf(*widget), name, textOf(*widget), place, widget->isVisible()));
            if (const auto* tabs = qobject_cast<const QTabBar*>(widget))
                for (int i = 0; i < tabs->count(); ++i)
                    all.append(told("tab", name, tabs->tabText(i), tabs->tabRect(i).translated(place.topLeft()),
                                    tabs->isVisible()));
        }
        const QByteArray now = QJsonDocument(all).toJson(QJsonDocument::Compact);
        if (now != std::exchange(m_last, now))
            writeDown("widgets.json", now);
    }

    QTimer m_later;
    QByteArray m_last;
};

class WitnessPlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "witness.json")
public:
    QObject* create(const QString& name, const QString&) override { return name == "witness" ? new Witness : nullptr; }
};

} // namespace

#include "witness.moc"
