// SPDX-License-Identifier: MIT
#include "tests/support/dxf_tags.h"

#include <QFile>

namespace merix::test {

std::vector<Tag> readTags(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    std::vector<Tag> tags;
    while (!file.atEnd()) {
        bool isNumber = false;
        const int code = file.readLine().trimmed().toInt(&isNumber);
        if (!isNumber)
            return file.atEnd() ? tags : std::vector<Tag>();
        QByteArray value = file.readLine();
        while (value.endsWith('\n') || value.endsWith('\r'))
            value.chop(1);
        tags.push_back({code, value});
    }
    return tags;
}

std::vector<Record> records(const std::vector<Tag>& tags, const char* section) {
    std::vector<Record> found;
    bool inside = false;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (tags[i].code == 0 && tags[i].value == "SECTION" && i + 1 < tags.size()) {
            inside = tags[i + 1].value == section;
            ++i;
            continue;
        }
        if (tags[i].code == 0 && tags[i].value == "ENDSEC")
            inside = false;
        if (!inside)
            continue;
        if (tags[i].code == 0)
            found.emplace_back();
        if (!found.empty())
            found.back().push_back(tags[i]);
    }
    return found;
}

QByteArray value(const Record& record, int code) {
    for (const Tag& tag : record)
        if (tag.code == code)
            return tag.value;
    return {};
}

double number(const Record& record, int code) {
    return value(record, code).trimmed().toDouble();
}

Difference compare(const std::vector<Tag>& before, const std::vector<Tag>& after, const char* freeVariable) {
    Difference difference;
    std::size_t next = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const bool isFree = i > 0 && before[i - 1].code == 9 && before[i - 1].value == freeVariable;
        while (next < after.size() && !(after[next] == before[i]) &&
               !(isFree && after[next].code == before[i].code && after[next - 1].value == freeVariable))
            difference.added.push_back(after[next++]);
        if (next == after.size()) {
            difference.lost = static_cast<long>(i);
            return difference;
        }
        ++next;
    }
    difference.added.insert(difference.added.end(), after.begin() + static_cast<long>(next), after.end());
    return difference;
}

} // namespace merix::test
