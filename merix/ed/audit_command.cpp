// SPDX-License-Identifier: MIT
// AUDIT: tells what does not hold together in the drawing.
#include "merix/ed/audit_command.h"

#include "merix/db/audit.h"
#include "merix/ed/drawing_access.h"
#include "merix/ed/view_commands.h"

#include <algorithm>

namespace merix::ed {

namespace {

QString handleText(MxDbHandle handle) {
    wchar_t text[17];
    handle.getIntoAsciiBuffer(text);
    return QString::fromWCharArray(text);
}

void audit() {
    using Finding = db::AuditFinding;
    const std::vector<Finding> findings = db::audit(drawing().self());
    for (const Finding& finding : findings)
        tell(QStringLiteral("%1 %2: %3")
                 .arg(finding.handle.isNull() ? QStringLiteral("-") : handleText(finding.handle),
                      QString::fromStdWString(finding.where), QString::fromStdWString(finding.what)));
    const auto broken = std::count_if(findings.begin(), findings.end(),
                                      [](const Finding& finding) { return finding.kind == Finding::Kind::kBroken; });
    const auto count = std::ptrdiff_t(findings.size());
    const QString counts = QStringLiteral("%1 broken, %2 loose").arg(broken).arg(count - broken);
    if (count == 0)
        tell(QStringLiteral("No faults found (%1).").arg(counts));
    else
        tell(QStringLiteral("%1 %2: %3.").arg(count).arg(QLatin1String(count == 1 ? "fault" : "faults"), counts));
}

} // namespace

void registerAuditCommand(CommandStack& stack) {
    stack.addCommand(kHostGroup, L"AUDIT", L"AUDIT", 0, audit);
}

} // namespace merix::ed
