// SPDX-License-Identifier: MIT
// "PHONOMARK": places one new, still silent note. What the user sets on the way, the speaker and the type of note, is
// remembered once a note is made.
#include "phonomark/commands/command_group.h"

#include "host/ed/input.h"
#include "phonomark/app/module_state.h"
#include "phonomark/dbutil/add_entity.h"
#include "phonomark/dbutil/attachments.h"
#include "phonomark/dbutil/documents.h"
#include "phonomark/dbutil/note_type.h"
#include "phonomark/dbutil/system_info.h"
#include "phonomark/dbutil/texts.h"
#include "phonomark/entity/phonomark.h"
#include "phonomark/registry/phonomark_manager.h"
#include "phonomark/settings/profile.h"

#include <array>
#include <cwchar>
#include <memory>

namespace {

constexpr unsigned kPlacingKeywords = 261, kSettingsKeywords = 262;
constexpr unsigned kStateFormat = 263, kPointPrompt = 264, kFirstCornerPrompt = 265, kOtherCornerPrompt = 266;
constexpr unsigned kObjectPrompt = 267, kSettingsPrompt = 268, kSpeakerFormat = 269;
constexpr unsigned kShownText = 270, kAlreadyAttachedText = 286;
constexpr int kEmptyNotAllowed = 1, kEmptyAllowed = 0;
constexpr std::size_t kKeywordCapacity = 131;
constexpr std::size_t kSpeakerCapacity = 133;
constexpr unsigned kLoginCapacity = 512;

/// One run of the command.
class Insertion {
public:
    Insertion();
    /// Prompts until the note can be made; false when the user cancelled.
    bool prompt();
    void createNote() const;

private:
    enum class Next { kAskAgain, kCreate, kEnd };

    void printState() const;
    Next placePoint();
    Next placeRegion();
    Next placeObject();
    /// What follows from a point prompt that gave no point.
    Next withoutPoint(int result);
    Next byKeyword();
    Next settings();
    Next askSpeaker();

    int m_type;
    std::wstring m_speaker;
    void place(MxDbPhonomark& note) const;

    MxGePoint3d m_point;
    MxDbExtents m_region;
    MxDbObjectId m_object;
};

Insertion::Insertion()
    : m_type(GetProfileIntW(RegSection(), L"VoiceType", kPointNote))
    , m_speaker(GetProfileStringW(RegSection(), L"Spokesman", L"")) {
    if (m_speaker.empty())
        m_speaker = localUser(kLoginCapacity).str();
}

bool Insertion::prompt() {
    Next next = Next::kAskAgain;
    while (next == Next::kAskAgain) {
        printState();
        switch (m_type) {
        case kPointNote:
            next = placePoint();
            break;
        case kRegionNote:
            next = placeRegion();
            break;
        case kObjectNote:
            next = placeObject();
            break;
        default: // a note of any other type is made without being placed
            next = Next::kCreate;
            break;
        }
    }
    return next == Next::kCreate;
}

void Insertion::printState() const {
    mxutPrintText(formatText(resourceText(kStateFormat), {PhonomarkType(m_type), m_speaker}).c_str());
}

Insertion::Next Insertion::placePoint() {
    mxedInitGet(kEmptyNotAllowed, resourceText(kPlacingKeywords).c_str());
    MxGePoint3d picked;
    const int result = mxedGetPoint(nullptr, resourceText(kPointPrompt).c_str(), picked);
    if (result != kInputNormal)
        return withoutPoint(result);
    mxdbUcs2Wcs(picked, m_point, false);
    return Next::kCreate;
}

Insertion::Next Insertion::placeRegion() {
    mxedInitGet(kEmptyNotAllowed, resourceText(kPlacingKeywords).c_str());
    MxGePoint3d first, opposite;
    const int result = mxedGetPoint(nullptr, resourceText(kFirstCornerPrompt).c_str(), first);
    if (result != kInputNormal)
        return withoutPoint(result);
    if (mxedGetCorner(first, resourceText(kOtherCornerPrompt).c_str(), opposite) != kInputNormal)
        return Next::kEnd;
    for (const MxGePoint3d& corner : {first, opposite}) {
        MxGePoint3d world;
        mxdbUcs2Wcs(corner, world, false);
        m_region.addPoint(world);
    }
    return Next::kCreate;
}

Insertion::Next Insertion::placeObject() {
    for (;;) {
        mxedInitGet(kEmptyNotAllowed, resourceText(kPlacingKeywords).c_str());
        MxGePoint3d picked;
        // A marker may cover the object that is meant.
        switch (mxedEntSel(resourceText(kObjectPrompt).c_str(), m_object, picked, MxDbPhonomark::desc())) {
        case kInputNormal:
            return Next::kCreate;
        case kInputCancel:
            return Next::kEnd;
        case kInputKeyword:
            return byKeyword();
        default: // nothing was picked
            break;
        }
    }
}

Insertion::Next Insertion::withoutPoint(int result) {
    switch (result) {
    case kInputCancel:
        return Next::kEnd;
    case kInputKeyword:
        return byKeyword();
    default: // the note is made all the same, at the origin
        return Next::kCreate;
    }
}

Insertion::Next Insertion::byKeyword() {
    std::array<wchar_t, kKeywordCapacity> keyword{};
    mxedGetInput(keyword.data(), keyword.size());
    return std::wcscmp(keyword.data(), L"Settings") == 0 ? settings() : Next::kCreate;
}

Insertion::Next Insertion::settings() {
    mxedInitGet(kEmptyAllowed, resourceText(kSettingsKeywords).c_str());
    std::array<wchar_t, kKeywordCapacity> keyword{};
    switch (mxedGetKword(resourceText(kSettingsPrompt).c_str(), keyword.data(), keyword.size())) {
    case kInputNormal:
        if (std::wcscmp(keyword.data(), L"Spokesman") == 0)
            return askSpeaker();
        m_type = PhonomarkType(keyword.data());
        return Next::kAskAgain;
    case kInputNone:
        m_type = kPointNote;
        return Next::kAskAgain;
    default:
        return Next::kEnd;
    }
}

Insertion::Next Insertion::askSpeaker() {
    const std::wstring prompt = formatText(resourceText(kSpeakerFormat), {m_speaker});
    std::array<wchar_t, kSpeakerCapacity> answer{};
    const int result = mxedGetString(false, prompt.c_str(), answer.data(), answer.size());
    if (result == kInputCancel)
        return Next::kEnd;
    if (result == kInputNone || answer[0] == L'\0')
        m_speaker.resize(std::min(m_speaker.size(), kSpeakerCapacity - 1));
    else
        m_speaker = answer.data();
    return Next::kAskAgain;
}

void Insertion::place(MxDbPhonomark& note) const {
    switch (m_type) {
    case kPointNote:
        note.setPosition(m_point);
        break;
    case kRegionNote:
        note.setExtents(m_region);
        break;
    case kObjectNote:
        note.setAttachObj(m_object);
        break;
    default:
        break;
    }
}

void Insertion::createNote() const {
    if (m_type == kObjectNote && IsAttachedVoice(m_object)) {
        mxutPrintfById(kAlreadyAttachedText);
        return;
    }
    auto note = std::make_unique<MxDbPhonomark>();
    note->setPhonomarkType(m_type);
    place(*note);
    note->setSpokesman(m_speaker);
    note->setDatatime(GetSysDataTime());
    MxDbObjectId id;
    const MxDbPhonomark* placed = note.get();
    if (addEntityToCurrentSpace(id, note.get()))
        static_cast<void>(note.release()); // the database's
    if (PhonomarkManager* manager = livePhManager()) {
        manager->AppendPhonomark(id, currentDocument());
        if (m_type == kObjectNote)
            manager->addNotifier(placed, m_object);
    }
    WriteProfileStringW(RegSection(), L"Spokesman", m_speaker);
    WriteProfileInt(RegSection(), L"VoiceType", m_type);
}

/// Inserting a note always switches the display of notes on.
void showNotes() {
    PhonomarkManager* manager = livePhManager();
    if (IsShowPhonomark() || !manager)
        return;
    manager->ShowAllObjects(true, currentDocument());
    SetPhonomarkVar(true);
    mxutPrintfById(kShownText);
    manager->UpdateAll(currentDocument());
}

} // namespace

void PhonomarkCmdGroup::cmdInsertPhonomark() {
    showNotes();
    Insertion insertion;
    if (insertion.prompt())
        insertion.createNote();
}
