// SPDX-License-Identifier: MIT
#include "merix/ed/prompter.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/typed_point.h"

#include <QEventLoop>

namespace merix::ed {

namespace {
constexpr int kNoEmptyAnswer = 1;
}

Prompter& Prompter::instance() {
    static Prompter* const prompter = new Prompter; // never destroyed: modules may still call at the very end
    return *prompter;
}

void Prompter::init(int control, const QString& keywords) {
    if (isWaiting())
        return;
    m_control = control;
    m_keywords = parseKeywords(keywords);
}

int Prompter::getPoint(const MxGePoint3d* base, const QString& prompt, MxGePoint3d& point) {
    if (isWaiting())
        return kInputError;
    m_base = base ? std::optional(*base) : std::nullopt;
    return waitForPoint(Wants::kPoint, prompt, point);
}

int Prompter::getCorner(const MxGePoint3d& base, const QString& prompt, MxGePoint3d& corner) {
    if (isWaiting())
        return kInputError;
    m_base = base;
    m_corner = true;
    return waitForPoint(Wants::kPoint, prompt, corner);
}

int Prompter::getPick(const QString& prompt, MxGePoint3d& point) {
    if (isWaiting())
        return kInputError;
    return waitForPoint(Wants::kPick, prompt, point);
}

int Prompter::waitForPoint(Wants wants, const QString& prompt, MxGePoint3d& point) {
    const int result = wait(wants, prompt);
    m_base.reset();
    m_corner = false;
    if (result == kInputNormal)
        point = m_point;
    return result;
}

int Prompter::getKeyword(const QString& prompt, QString& keyword) {
    const int result = wait(Wants::kKeyword, prompt);
    if (result == kInputNormal)
        keyword = m_lastKeyword;
    return result;
}

int Prompter::getString(bool spaces, const QString& prompt, QString& text) {
    if (isWaiting())
        return kInputError;
    m_spaces = spaces;
    const int result = wait(Wants::kString, prompt);
    if (result == kInputNormal)
        text = m_text;
    return result;
}

int Prompter::wait(Wants wants, const QString& prompt) {
    if (isWaiting())
        return kInputError; // one prompt at a time: another command, or an event inside this one, asked
    m_wants = wants;
    m_answered = false;
    m_result = kInputNormal;
    m_lastKeyword.clear();
    Console::instance().setPrompt(prompt, m_keywords);
    Q_EMIT changed();
    while (!m_answered) {
        if (!m_typeAhead.isEmpty()) {
            take(std::exchange(m_typeAhead, QString()));
            continue;
        }
        if (m_source && m_source->feed())
            continue;
        if (m_answered)
            break;
        QEventLoop loop;
        m_loop = &loop;
        loop.exec();
        m_loop = nullptr;
        if (!m_answered)
            cancel(); // the program ends: the loop was left without an answer
    }
    m_wants = Wants::kNothing;
    m_control = 0;
    m_keywords.clear();
    Console::instance().setPrompt(QString(), {});
    Q_EMIT changed();
    return m_result;
}

void Prompter::finish(int result) {
    m_result = result;
    m_answered = true;
    if (m_loop)
        m_loop->quit();
}

void Prompter::submitLine(const QString& line) {
    if (line.trimmed().startsWith(QLatin1Char('(')))
        HostFunctions::instance().callLine(line);
    else if (isWaiting() && !m_answered)
        take(line);
    else
        CommandStack::instance().runLine(line);
}

void Prompter::submitPoint(const MxGePoint3d& world) {
    if ((m_wants != Wants::kPoint && m_wants != Wants::kPick) || m_answered)
        return;
    Console::instance().print(QLatin1Char('\n') + Console::instance().prompt() + formatPoint(world));
    m_point = m_lastPoint = world;
    finish(kInputNormal);
}

void Prompter::cancel() {
    if (!isWaiting() || m_answered)
        return;
    m_typeAhead.clear();
    Console::instance().print(QLatin1Char('\n') + Console::instance().prompt() + QStringLiteral("*Cancel*"));
    finish(kInputCancel);
}

void Prompter::take(const QString& line) {
    const bool wholeLine = m_wants == Wants::kString && m_spaces;
    QString answer = line.trimmed();
    if (!wholeLine)
        if (const int blank = answer.indexOf(QLatin1Char(' ')); blank >= 0) {
            m_typeAhead = answer.mid(blank + 1).trimmed();
            answer.truncate(blank);
        }
    Console::instance().print(QLatin1Char('\n') + Console::instance().prompt() + answer);
    if (answer.isEmpty()) {
        if (m_control & kNoEmptyAnswer)
            askAgain(QStringLiteral("An answer is needed."));
        else
            finish(kInputNone);
    } else if (m_wants == Wants::kPoint || m_wants == Wants::kPick) {
        takePoint(answer);
    } else if (m_wants == Wants::kKeyword) {
        takeKeyword(answer);
    } else {
        m_text = answer;
        finish(kInputNormal);
    }
}

void Prompter::takePoint(const QString& answer) {
    if (const auto point = parseTypedPoint(answer, m_base.value_or(m_lastPoint))) {
        m_point = m_lastPoint = *point;
        finish(kInputNormal);
    } else if (!takeAsKeyword(answer, kInputKeyword)) {
        askAgain(m_keywords.empty() ? QStringLiteral("A point is needed.")
                                    : QStringLiteral("A point or one of the options is needed."));
    }
}

void Prompter::takeKeyword(const QString& answer) {
    if (!takeAsKeyword(answer, kInputNormal))
        askAgain(QStringLiteral("That is none of the options."));
}

bool Prompter::takeAsKeyword(const QString& answer, int result) {
    const KeywordMatch match = matchKeyword(m_keywords, answer);
    if (match.keyword) {
        m_lastKeyword = match.keyword->global;
        finish(result);
        return true;
    }
    if (match.candidates.isEmpty())
        return false;
    askAgain(QStringLiteral("That can mean %1.").arg(match.candidates.join(QStringLiteral(" or "))));
    return true;
}

void Prompter::askAgain(const QString& why) {
    m_typeAhead.clear(); // it was meant to follow an answer that was none
    Console::instance().print(QLatin1Char('\n') + why);
    Q_EMIT changed();
}

void Prompter::beginCommand(const QString& typeAhead) {
    m_typeAhead = typeAhead.trimmed();
    m_result = kInputNormal;
    m_control = 0;
    m_keywords.clear();
}

void Prompter::endCommand() {
    m_typeAhead.clear();
}

} // namespace merix::ed
