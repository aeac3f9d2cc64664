// SPDX-License-Identifier: MIT
#include "merix/ed/prompter.h"

#include "merix/ed/command_stack.h"
#include "merix/ed/host_functions.h"
#include "merix/ed/typed_point.h"

#include <QEventLoop>

#include <cmath>

namespace merix::ed {

Prompter::Given::Given(std::vector<MxEdAnswer> answers, bool echo)
    : m_answers(answers.begin(), answers.end())
    , m_echo(echo)
    , m_outer(std::exchange(instance().m_given, this))
    , m_typeAhead(instance().m_typeAhead)
    , m_lastKeyword(instance().m_lastKeyword)
    , m_keywords(instance().m_keywords)
    , m_control(instance().m_control)
    , m_result(instance().m_result)
    , m_takesAway(instance().m_takesAway) {}

Prompter::Given::~Given() {
    Prompter& prompter = instance();
    prompter.m_given = m_outer;
    prompter.m_typeAhead = m_typeAhead;
    prompter.m_lastKeyword = m_lastKeyword;
    prompter.m_keywords = m_keywords;
    prompter.m_control = m_control;
    prompter.m_takesAway = m_takesAway;
    prompter.m_result = m_result;
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

int Prompter::waitForNumber(Wants wants, const QString& prompt) {
    m_isMeasured = false;
    const int result = wait(wants, prompt);
    m_base.reset();
    return result;
}

int Prompter::getMeasure(Wants wants, const MxGePoint3d* base, const QString& prompt, double& value) {
    if (isWaiting())
        return kInputError;
    const int control = m_control;
    m_base = base ? std::optional(*base) : std::nullopt;
    int result = waitForNumber(wants, prompt);
    if (result == kInputNormal && m_isMeasured) {
        m_base = m_point;
        m_control = control | kNotEmpty;
        result = waitForNumber(wants, QStringLiteral("Second point: "));
    }
    if (result == kInputNormal)
        value = m_number;
    return result;
}

int Prompter::getDistance(const MxGePoint3d* base, const QString& prompt, double& distance) {
    return getMeasure(Wants::kDistance, base, prompt, distance);
}

int Prompter::getAngle(const MxGePoint3d* base, const QString& prompt, double& radians) {
    return getMeasure(Wants::kAngle, base, prompt, radians);
}

int Prompter::getReal(const QString& prompt, double& value) {
    if (isWaiting())
        return kInputError;
    const int result = waitForNumber(Wants::kReal, prompt);
    if (result == kInputNormal)
        value = m_number;
    return result;
}

int Prompter::getInteger(const QString& prompt, int& value) {
    if (isWaiting())
        return kInputError;
    const int result = waitForNumber(Wants::kInteger, prompt);
    if (result == kInputNormal)
        value = static_cast<int>(m_number);
    return result;
}

bool Prompter::isPointTaken() const {
    return m_wants == Wants::kPoint || m_wants == Wants::kPick || m_wants == Wants::kDistance ||
           m_wants == Wants::kAngle;
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
        if (!m_typeAhead.isEmpty())
            take(std::exchange(m_typeAhead, QString()));
        else if (m_given)
            takeGiven();
        else if (!m_source || !m_source->feed())
            waitForEvents();
    }
    m_wants = Wants::kNothing;
    m_control = 0;
    m_keywords.clear();
    Console::instance().setPrompt(QString(), {});
    Q_EMIT changed();
    return m_result;
}

void Prompter::waitForEvents() {
    if (m_answered)
        return;
    QEventLoop loop;
    m_loop = &loop;
    loop.exec();
    m_loop = nullptr;
    if (!m_answered)
        cancel(); // the program ends: the loop was left without an answer
}

void Prompter::takeGiven() {
    if (m_given->m_answers.empty()) {
        cancel();
        return;
    }
    const MxEdAnswer answer = std::move(m_given->m_answers.front());
    m_given->m_answers.pop_front();
    if (const auto* text = std::get_if<std::wstring>(&answer))
        take(QString::fromStdWString(*text));
    else if (isPointTaken())
        submitPoint(std::get<MxGePoint3d>(answer));
    else
        askAgain(QStringLiteral("A point is no answer here."));
}

void Prompter::echo(const QString& text) const {
    if (!m_given || m_given->m_echo)
        Console::instance().print(text);
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

void Prompter::submitPoint(const MxGePoint3d& world, bool takesAway) {
    if (!isPointTaken() || m_answered)
        return;
    echo(QLatin1Char('\n') + Console::instance().prompt() + formatPoint(world));
    m_takesAway = takesAway;
    finishPoint(world);
}

/// A point answers a prompt for a number too: by its distance or direction from the base, or as the base.
void Prompter::finishPoint(const MxGePoint3d& point) {
    if (!isInReach(point)) {
        askAgain(QStringLiteral("That point is too far away."));
        return;
    }
    m_point = m_lastPoint = point;
    if (m_wants == Wants::kPoint || m_wants == Wants::kPick) {
        finish(kInputNormal);
    } else if (!m_base) {
        m_isMeasured = true;
        finish(kInputNormal);
    } else {
        const MxGeVector3d v = point - *m_base;
        finishNumber(m_wants == Wants::kAngle ? std::atan2(v.y, v.x) : v.length());
    }
}

void Prompter::finishNumber(double number) {
    if (!std::isfinite(number)) {
        askAgain(QStringLiteral("That number is too large."));
    } else if ((m_control & kNotZero) && (m_control & kNotNegative) && number <= 0.0) {
        askAgain(QStringLiteral("A number above 0 is needed."));
    } else if ((m_control & kNotZero) && number == 0.0) {
        askAgain(QStringLiteral("A number other than 0 is needed."));
    } else if ((m_control & kNotNegative) && number < 0.0) {
        askAgain(QStringLiteral("A number that is not below 0 is needed."));
    } else {
        m_isMeasured = false;
        m_number = number;
        finish(kInputNormal);
    }
}

void Prompter::cancel() {
    if (!isWaiting() || m_answered)
        return;
    m_typeAhead.clear();
    echo(QLatin1Char('\n') + Console::instance().prompt() + QStringLiteral("*Cancel*"));
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
    echo(QLatin1Char('\n') + Console::instance().prompt() + answer);
    m_takesAway = false;
    if (answer.isEmpty()) {
        if (m_control & kNotEmpty)
            askAgain(QStringLiteral("An answer is needed."));
        else
            finish(kInputNone);
    } else if (m_wants == Wants::kPoint || m_wants == Wants::kPick) {
        takePoint(answer);
    } else if (m_wants == Wants::kKeyword) {
        takeKeyword(answer);
    } else if (m_wants == Wants::kString) {
        m_text = answer;
        finish(kInputNormal);
    } else {
        takeNumber(answer);
    }
}

void Prompter::takeNumber(const QString& answer) {
    bool ok = false;
    const double number = m_wants == Wants::kInteger ? answer.toInt(&ok) : answer.toDouble(&ok);
    if (ok && std::isfinite(number)) {
        finishNumber(m_wants == Wants::kAngle ? degreesToRadians(number) : number);
        return;
    }
    if (isPointTaken())
        if (const auto point = parseTypedPoint(answer, m_base.value_or(m_lastPoint))) {
            finishPoint(*point);
            return;
        }
    if (takeAsKeyword(answer, kInputKeyword))
        return;
    const QString what = m_wants == Wants::kInteger    ? QStringLiteral("A whole number")
                         : m_wants == Wants::kDistance ? QStringLiteral("A distance")
                         : m_wants == Wants::kAngle    ? QStringLiteral("An angle")
                                                       : QStringLiteral("A number");
    askAgain(what + (m_keywords.empty() ? QStringLiteral(" is needed.")
                                        : QStringLiteral(" or one of the options is needed.")));
}

void Prompter::takePoint(const QString& answer) {
    if (const auto point = parseTypedPoint(answer, m_base.value_or(m_lastPoint)))
        finishPoint(*point);
    else if (!takeAsKeyword(answer, kInputKeyword))
        askAgain(m_keywords.empty() ? QStringLiteral("A point is needed.")
                                    : QStringLiteral("A point or one of the options is needed."));
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
    if (match.candidates.isEmpty() && (m_control & kAnyText)) {
        m_lastKeyword = answer;
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
    Q_EMIT changed();
}

void Prompter::endCommand() {
    m_typeAhead.clear();
}

} // namespace merix::ed
