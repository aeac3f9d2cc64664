// SPDX-License-Identifier: MIT
// What stands on the windows of the program, as the witness inside it writes it down.
#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRect>
#include <QString>

#include <vector>

namespace merix::test {

/// A widget, or a tab of a bar of tabs (kind "tab"), with its place on the screen.
struct Widget {
    QString kind; ///< the C++ class
    QString name, text;
    QRect place;
    bool isVisible = false;
};

class Witnessed {
public:
    explicit Witnessed(const QString& folder)
        : m_folder(folder) {}

    /// The whole text of the command history.
    QString said() const { return QString::fromUtf8(read("said")); }
    int timesSaid(const QString& text) const { return said().count(text, Qt::CaseInsensitive); }

    std::vector<Widget> widgets() const {
        std::vector<Widget> all;
        const QJsonArray told = QJsonDocument::fromJson(read("widgets.json")).array();
        for (const QJsonValue& one : told)
            all.push_back({one["class"].toString(), one["name"].toString(), one["text"].toString(),
                           QRect(one["x"].toInt(), one["y"].toInt(), one["w"].toInt(), one["h"].toInt()),
                           one["visible"].toBool()});
        return all;
    }
    /// The first visible one whose class or name has `what` in it and whose text has `text`; empty for none.
    Widget visible(const QString& what, const QString& text = QString()) const {
        for (const Widget& widget : widgets())
            if (widget.isVisible && (widget.kind.contains(what) || widget.name.contains(what)) &&
                widget.text.contains(text))
                return widget;
        return {};
    }
    bool sees(const QString& what, const QString& text = QString()) const { return visible(what, text).isVisible; }
    bool seesMenu() const {
        for (const Widget& widget : widgets())
            if (widget.isVisible && widget.kind.endsWith("Menu"))
                return true;
        return false;
    }
    /// Where the tag window stands; null while it is not seen.
    QRect tag() const { return visible("CPhonomarkTagUIDlg").place; }
    /// True while there is one, seen or not.
    bool hasTag() const {
        for (const Widget& widget : widgets())
            if (widget.kind == "CPhonomarkTagUIDlg")
                return true;
        return false;
    }
    /// What the command line asks for; "Command:" while it waits for a command.
    QString prompt() const { return visible("Prompt").text; }

private:
    QByteArray read(const char* name) const {
        QFile file(m_folder + '/' + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString m_folder;
};

} // namespace merix::test
