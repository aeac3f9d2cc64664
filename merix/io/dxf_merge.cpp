// SPDX-License-Identifier: MIT
#include "merix/io/dxf_merge.h"

#include "merix/io/dxf_value.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <span>

namespace merix::io {
namespace {

using Old = std::span<const DxfTag>;
using New = std::span<const DxfOutTag>;

bool operator==(const DxfOutTag& left, const DxfOutTag& right) {
    return left.code == right.code && left.value == right.value;
}

bool equal(New left, New right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const DxfOutTag& a, const DxfOutTag& b) { return a == b; });
}

/// A tag under its code and its place among the tags of that code.
template <class Tag> std::map<std::pair<int, int>, std::size_t> indexTags(std::span<const Tag> tags) {
    std::map<int, int> counts;
    std::map<std::pair<int, int>, std::size_t> index;
    for (std::size_t i = 0; i < tags.size(); ++i)
        index.emplace(std::pair{tags[i].code, counts[tags[i].code]++}, i);
    return index;
}

/// Splits in front of every tag that `starts`; what stands in front of the first is the first piece.
template <class Tag, class Starts>
std::vector<std::span<const Tag>> splitTags(std::span<const Tag> tags, Starts starts) {
    std::vector<std::span<const Tag>> pieces;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= tags.size(); ++i) {
        if (i == tags.size() || starts(tags[i])) {
            pieces.push_back(tags.subspan(begin, i - begin));
            begin = i;
        }
    }
    return pieces;
}

class Merger {
public:
    explicit Merger(std::string_view lineEnd)
        : m_lineEnd(lineEnd) {}

    std::string take() { return std::move(m_out); }

    void keep(const DxfTag& tag) { m_out += tag.text; }
    void keep(Old tags) {
        for (const DxfTag& tag : tags)
            keep(tag);
    }
    void add(const DxfOutTag& tag) { appendTag(m_out, tag.code, tag.value, m_lineEnd); }
    void add(New tags) {
        for (const DxfOutTag& tag : tags)
            add(tag);
    }
    void addText(std::string_view text) { m_out += text; }

    /// The tag with another value; its lines keep their form.
    void replace(const DxfTag& tag, std::string_view value) {
        const auto front = static_cast<std::size_t>(tag.value.data() - tag.text.data());
        m_out.append(tag.text.substr(0, front)).append(value).append(tag.text.substr(front + tag.value.size()));
    }

    void section(Old old, New now, New before);

private:
    void group(Old old, New now, New before, bool oldHasGroup);
    void droppedGroup(Old old, New before, const std::set<int>& codesOfOthers);
    void wholeSection(Old old, New now);

    std::string m_out;
    std::string_view m_lineEnd;
};

void Merger::group(Old old, New now, New before, bool oldHasGroup) {
    const auto nowIndex = indexTags(now);
    const auto beforeIndex = indexTags(before);
    const auto find = [](const auto& index, std::pair<int, int> key) -> std::optional<std::size_t> {
        const auto found = index.find(key);
        return found == index.end() ? std::nullopt : std::optional(found->second);
    };
    std::vector<std::optional<std::size_t>> matched(now.size()); // by tag of now: its tag in old
    for (const auto& [key, i] : indexTags(old)) {
        if (const auto n = find(nowIndex, key))
            matched[*n] = i;
    }
    // New tags by the old tag that they follow; those that follow none go to the end.
    std::map<std::size_t, std::vector<std::size_t>> insertions;
    std::size_t anchor = old.size();
    for (const auto& [key, n] : [&] {
             std::map<std::size_t, std::pair<int, int>> inOrder;
             for (const auto& [k, i] : nowIndex)
                 inOrder.emplace(i, k);
             std::vector<std::pair<std::pair<int, int>, std::size_t>> list;
             for (const auto& [i, k] : inOrder)
                 list.emplace_back(k, i);
             return list;
         }()) {
        if (matched[n]) {
            anchor = *matched[n];
            continue;
        }
        const auto b = find(beforeIndex, key);
        if (!(oldHasGroup && b && before[*b] == now[n]))
            insertions[anchor].push_back(n);
    }
    std::map<int, int> counts;
    for (std::size_t i = 0; i < old.size(); ++i) {
        const std::pair key{old[i].code, counts[old[i].code]++};
        const auto n = find(nowIndex, key);
        const auto b = find(beforeIndex, key);
        if (n) {
            if ((b && before[*b] == now[*n]) || sameValue(old[i].code, old[i].value, now[*n].value))
                keep(old[i]);
            else
                replace(old[i], now[*n].value);
        } else if (!b) {
            keep(old[i]);
        }
        if (const auto found = insertions.find(i); found != insertions.end()) {
            for (const std::size_t n2 : found->second)
                add(now[n2]);
        }
    }
    if (const auto found = insertions.find(old.size()); found != insertions.end()) {
        for (const std::size_t n : found->second)
            add(now[n]);
    }
}

/// Of an element that is gone, what the class does not understand stays unless every element has it.
void Merger::droppedGroup(Old old, New before, const std::set<int>& codesOfOthers) {
    const auto beforeIndex = indexTags(before);
    std::map<int, int> counts;
    for (const DxfTag& tag : old) {
        if (!beforeIndex.contains({tag.code, counts[tag.code]++}) && !codesOfOthers.contains(tag.code))
            keep(tag);
    }
}

/// Order is part of the value: nothing is matched by code.
void Merger::wholeSection(Old old, New now) {
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (i < old.size() && old[i].code == now[i].code && sameValue(now[i].code, old[i].value, now[i].value))
            keep(old[i]);
        else
            add(now[i]);
    }
}

void Merger::section(Old old, New now, New before) {
    if (equal(now, before)) {
        keep(old);
        return;
    }
    if (!now.empty() && now.front().code == 100 && now.front().value == "AcDbXrecord") {
        wholeSection(old, now);
        return;
    }
    // A list of elements (vertices, entries) is matched element by element: each begins with the code that is first
    // to repeat.
    const auto repeating = [](New tags) {
        std::map<int, int> counts;
        for (const DxfOutTag& tag : tags)
            ++counts[tag.code];
        const auto found =
            std::find_if(tags.begin(), tags.end(), [&](const DxfOutTag& tag) { return counts[tag.code] > 1; });
        return found == tags.end() ? 0 : found->code;
    };
    const int leader = repeating(now) != 0 ? repeating(now) : repeating(before);
    const auto starts = [leader](const auto& tag) { return leader != 0 && tag.code == leader; };
    const auto olds = splitTags(old, starts);
    const auto nows = splitTags(now, starts);
    const auto befores = splitTags(before, starts);
    const auto at = [](const auto& pieces, std::size_t i) {
        return i < pieces.size() ? pieces[i] : typename std::decay_t<decltype(pieces)>::value_type();
    };
    for (std::size_t i = 0; i < nows.size(); ++i)
        group(at(olds, i), nows[i], at(befores, i), i < olds.size());
    std::set<int> codes;
    for (std::size_t i = 1; i + 1 < olds.size(); ++i) {
        for (const DxfTag& tag : olds[i])
            codes.insert(tag.code);
    }
    if (olds.size() > nows.size() && !olds.empty())
        droppedGroup(olds.back(), at(befores, olds.size() - 1), codes);
}

/// The record in its pieces.
struct Source {
    std::vector<DxfTag> head; ///< up to the first subclass marker; in old versions the leading handle and groups
    std::vector<DxfTag> body;
    std::vector<DxfTag> tail; ///< extended data
    std::string_view followers;
    bool marked = false;
};

bool isHeadCode(int code) {
    return code == 0 || code == 5 || code == 105 || code == 102 || code == 330 || code == 360 || code == 999;
}

Source takeApart(std::string_view text) {
    Source source;
    std::vector<DxfTag> tags;
    DxfScanner scanner(text);
    DxfTag tag;
    while (true) {
        const std::size_t at = scanner.position();
        if (scanner.next(tag) != DxfScanner::Result::kTag || (tag.code == 0 && !tags.empty())) {
            source.followers = text.substr(at);
            break;
        }
        tags.push_back(tag);
    }
    auto extended = tags.end();
    while (extended != tags.begin() && (extended - 1)->code >= 999)
        --extended;
    source.tail.assign(extended, tags.end());
    tags.erase(extended, tags.end());
    const auto marker = std::find_if(tags.begin(), tags.end(), [](const DxfTag& t) { return t.code == 100; });
    source.marked = marker != tags.end();
    const bool table = !tags.empty() && trimmed(tags.front().value) == "TABLE";
    const auto split = source.marked ? marker : std::find_if(tags.begin(), tags.end(), [table](const DxfTag& t) {
        return !isHeadCode(t.code) && !(table && t.code == 2);
    });
    source.head.assign(tags.begin(), split);
    source.body.assign(split, tags.end());
    return source;
}

/// The groups of the head as they come: 102 to 102.
std::vector<std::span<const DxfTag>> headPieces(const std::vector<DxfTag>& head) {
    std::vector<std::span<const DxfTag>> pieces;
    const std::span<const DxfTag> all(head);
    for (std::size_t i = 0; i < head.size(); ++i) {
        std::size_t end = i + 1;
        if (head[i].code == 102 && trimmed(head[i].value).starts_with("{")) {
            while (end < head.size() && head[end].code != 102)
                ++end;
            end = std::min(end + 1, head.size());
        }
        pieces.push_back(all.subspan(i, end - i));
        i = end - 1;
    }
    return pieces;
}

std::vector<std::uint64_t> handlesOf(std::span<const DxfTag> group) {
    std::vector<std::uint64_t> handles;
    for (const DxfTag& tag : group) {
        if (dxfKind(tag.code) == DxfKind::kHandle)
            handles.push_back(toHandle(tag.value));
    }
    return handles;
}

void mergeHead(Merger& out, const std::vector<DxfTag>& head, const DxfImage& now, bool hasHandle,
               const DrawingParts& parts) {
    const auto pieces = headPieces(head);
    const auto isGroup = [](std::span<const DxfTag> piece, std::string_view name) {
        return piece.size() > 1 && trimmed(piece.front().value) == name;
    };
    bool hasExtension = false, hasReactors = false;
    for (const auto& piece : pieces) {
        hasExtension = hasExtension || isGroup(piece, "{ACAD_XDICTIONARY");
        hasReactors = hasReactors || isGroup(piece, "{ACAD_REACTORS");
    }
    std::vector<std::uint64_t> extension;
    if (now.extensionDictionary != 0)
        extension.push_back(now.extensionDictionary);
    // What is missing goes behind the handle; a record without one gets it behind its name.
    std::size_t place = 0;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        if (pieces[i].front().code == 5 || pieces[i].front().code == 105)
            place = i;
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto& piece = pieces[i];
        if (isGroup(piece, "{ACAD_XDICTIONARY") && handlesOf(piece) != extension)
            out.addText(linkGroups(now, true, false, parts.lineEnd));
        else if (isGroup(piece, "{ACAD_REACTORS") && handlesOf(piece) != now.reactors)
            out.addText(linkGroups(now, false, true, parts.lineEnd));
        else if (piece.size() == 1 && piece.front().code == 330 && now.owner != 0 &&
                 toHandle(piece.front().value) != now.owner)
            out.replace(piece.front(), fromHandle(now.owner));
        else
            out.keep(piece);
        if (i != place)
            continue;
        if (!hasHandle && now.handle != 0)
            out.add(DxfOutTag{5, fromHandle(now.handle)});
        out.addText(linkGroups(now, !hasExtension, !hasReactors, parts.lineEnd));
    }
}

bool isMarker(const DxfOutTag& tag) {
    return tag.code == 100;
}

/// Sections in order with the marker's text and its place among those of the same text.
template <class Tag, class Starts>
std::vector<std::pair<std::pair<std::string, int>, std::span<const Tag>>> sectionsOf(std::span<const Tag> tags,
                                                                                     Starts starts) {
    std::vector<std::pair<std::pair<std::string, int>, std::span<const Tag>>> sections;
    std::map<std::string, int> counts;
    for (const auto& piece : splitTags(tags, starts)) {
        if (piece.empty())
            continue;
        std::string name = piece.front().code == 100 ? std::string(trimmed(piece.front().value)) : "\n";
        const int count = counts[name]++;
        sections.push_back({{std::move(name), count}, piece});
    }
    return sections;
}

void mergeSections(Merger& out, Old old, New now, New before) {
    const auto olds = sectionsOf<DxfTag>(old, [](const DxfTag& tag) { return tag.code == 100 || tag.code == 101; });
    const auto nows = sectionsOf<DxfOutTag>(now, isMarker);
    const auto befores = sectionsOf<DxfOutTag>(before, isMarker);
    const auto find = [](const auto& sections, const std::pair<std::string, int>& key) {
        return std::find_if(sections.begin(), sections.end(), [&](const auto& s) { return s.first == key; });
    };
    const auto beforeOf = [&](const std::pair<std::string, int>& key) {
        const auto found = find(befores, key);
        return found == befores.end() ? New() : found->second;
    };
    for (const auto& [key, tags] : olds) {
        const auto found = find(nows, key);
        if (found != nows.end())
            out.section(tags, found->second, beforeOf(key));
        else if (find(befores, key) == befores.end())
            out.keep(tags);
    }
    for (const auto& [key, tags] : nows) {
        if (find(olds, key) == olds.end() && !equal(tags, beforeOf(key)))
            out.add(tags);
    }
}

std::vector<DxfOutTag> withoutMarkers(std::vector<DxfOutTag> tags) {
    std::erase_if(tags, isMarker);
    return tags;
}

} // namespace

std::string mergeRecord(std::string_view sourceText, const DxfImage& now, const std::vector<DxfOutTag>& before,
                        const DrawingParts& parts) {
    const Source source = takeApart(sourceText);
    Merger out(parts.lineEnd);
    const auto hasHandle = std::any_of(source.head.begin(), source.head.end(),
                                       [](const DxfTag& tag) { return tag.code == 5 || tag.code == 105; }) ||
                           (!source.marked && std::any_of(source.body.begin(), source.body.end(),
                                                          [](const DxfTag& tag) { return tag.code == 5; }));
    mergeHead(out, source.head, now, hasHandle, parts);
    if (source.marked)
        mergeSections(out, source.body, now.body, before);
    else
        out.section(source.body, withoutMarkers(now.body), withoutMarkers(before));
    out.keep(source.tail);
    out.addText(source.followers);
    return out.take();
}

} // namespace merix::io
