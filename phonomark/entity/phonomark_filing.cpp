// SPDX-License-Identifier: MIT
// How a note is written into the drawing and read back, in the binary stream and as DXF groups. Drawings are untrusted:
// what they claim about sizes is checked against what they hold before memory is asked for.
#include "phonomark/entity/phonomark.h"

#include "host/db/database.h"
#include "phonomark/dbutil/border.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr wchar_t kSubclass[] = L"MxDbPhonomark";
/// Bytes in a binary chunk of DXF.
constexpr std::size_t kChunk = 127;
/// The most that a recording holds. A DXF record may announce this much without delivering it, but no more.
constexpr std::size_t kLongestRecording = 5'000'000;

/// Handles name objects of the drawing being worked on, whichever drawing the filer belongs to.
MxDbObjectId idOfHandle(const MxDbHandle& handle) {
    MxDbObjectId id;
    MxDbDatabase* working = mxdbHostApplicationServices()->workingDatabase();
    if (working && working->getMxDbObjectId(id, true, handle, 0) != Mx::eOk)
        id = {};
    return id;
}

void readText(MxDbDwgFiler* filer, MxString& text) {
    struct Buffer {
        ~Buffer() { mxutDelBuffer(text); }
        wchar_t* text = nullptr;
    } buffer;
    if (filer->readString(&buffer.text) == Mx::eOk)
        text = MxString(buffer.text);
}

} // namespace

/// What is gathered while the groups of one note are read.
struct MxDbPhonomark::DxfFields {
    MxGePoint3d minimum, maximum;
    bool announced = false; ///< a 93 has been read
    std::size_t size = 0;   ///< what it announced
    std::vector<unsigned char> samples;
    bool overrun = false; ///< chunks beyond what was announced
};

// --- binary

Mx::ErrorStatus MxDbPhonomark::dwgOutFields(MxDbDwgFiler* filer) const try {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dwgOutFields(filer); status != Mx::eOk)
        return status;
    if (const auto status = filer->writeUInt32(kCurrentVersionNumber); status != Mx::eOk)
        return status;
    filer->writeInt16(m_type);
    dwgOutLocation(filer);
    const std::uint32_t count = m_pAudioData ? m_audioDataSize : 0;
    filer->writeBool(m_bRecord);
    if (m_bRecord) {
        dwgOutWaveFormatData(filer);
        filer->writeUInt32(count);
        filer->writeBytes(m_pAudioData, count);
    }
    filer->writeString(m_spokesman.text());
    filer->writeString(m_datatime.text());
    filer->writeString(m_duration.text());
    return filer->filerStatus();
} catch (...) {
    return failed("writing a note", Mx::eItemUnreadable);
}

void MxDbPhonomark::dwgOutLocation(MxDbDwgFiler* filer) const {
    switch (m_type) {
    case kPointNote:
        filer->writePoint3d(m_position);
        break;
    case kRegionNote:
        filer->writePoint3d(m_extents.minPoint());
        filer->writePoint3d(m_extents.maxPoint());
        break;
    case kObjectNote:
        filer->writeHandle(m_attachId.handle());
        break;
    case kReplyNote:
        filer->writeHandle(m_replyId.handle());
        break;
    default:
        break;
    }
}

Mx::ErrorStatus MxDbPhonomark::dwgOutWaveFormatData(MxDbDwgFiler* filer) const {
    filer->writeUInt16(m_waveFormat.wFormatTag);
    filer->writeUInt16(m_waveFormat.nChannels);
    filer->writeUInt32(m_waveFormat.nSamplesPerSec);
    filer->writeUInt32(m_waveFormat.nAvgBytesPerSec);
    filer->writeUInt16(m_waveFormat.nBlockAlign);
    filer->writeUInt16(m_waveFormat.wBitsPerSample);
    return filer->writeUInt16(m_waveFormat.cbSize);
}

Mx::ErrorStatus MxDbPhonomark::dwgInFields(MxDbDwgFiler* filer) try {
    assertWriteEnabled();
    if (const auto status = MxDbEntity::dwgInFields(filer); status != Mx::eOk)
        return status;
    std::uint32_t version = 0;
    if (const auto status = filer->readUInt32(version); status != Mx::eOk)
        return status;
    if (version > kCurrentVersionNumber)
        return Mx::eNewerVersion;
    ++m_timesFiledIn;
    filer->readInt16(m_type);
    if (const auto status = dwgInLocation(filer); status != Mx::eOk)
        return status;
    filer->readBool(m_bRecord);
    if (m_bRecord)
        if (const auto status = dwgInSamples(filer); status != Mx::eOk)
            return status;
    readText(filer, m_spokesman);
    readText(filer, m_datatime);
    readText(filer, m_duration);
    return filer->filerStatus();
} catch (...) {
    return failed("reading a note", Mx::eItemUnreadable);
}

Mx::ErrorStatus MxDbPhonomark::dwgInLocation(MxDbDwgFiler* filer) {
    MxGePoint3d minimum, maximum;
    MxDbHandle handle;
    switch (m_type) {
    case kPointNote:
        filer->readPoint3d(m_position);
        break;
    case kRegionNote:
        filer->readPoint3d(minimum);
        filer->readPoint3d(maximum);
        m_extents.set(minimum, maximum);
        break;
    case kObjectNote:
        if (filer->readHandle(handle) != Mx::eOk)
            break;
        m_attachId = idOfHandle(handle);
        if (filer->filerType() == MxDbFilerType::kFile)
            refreshExtents();
        break;
    case kReplyNote:
        if (filer->readHandle(handle) == Mx::eOk)
            m_replyId = idOfHandle(handle);
        break;
    default:
        break;
    }
    return filer->filerStatus();
}

Mx::ErrorStatus MxDbPhonomark::dwgInSamples(MxDbDwgFiler* filer) {
    dwgInWaveFormatData(filer);
    std::uint32_t count = 0;
    if (const auto status = filer->readUInt32(count); status != Mx::eOk)
        return status;
    delAudioData();
    m_audioDataSize = 0;
    if (count > filer->bytesLeft())
        return Mx::eEndOfStream;
    if (!adoptSamples(nullptr, 0, count))
        return Mx::eItemUnreadable;
    return filer->readBytes(m_pAudioData, count);
}

Mx::ErrorStatus MxDbPhonomark::dwgInWaveFormatData(MxDbDwgFiler* filer) {
    // A packed field has no address that may be handed out.
    tWAVEFORMATEX read = m_waveFormat;
    const auto word = [filer](std::uint16_t value) {
        filer->readUInt16(value);
        return value;
    };
    const auto number = [filer](std::uint32_t value) {
        filer->readUInt32(value);
        return value;
    };
    read.wFormatTag = word(read.wFormatTag);
    read.nChannels = word(read.nChannels);
    read.nSamplesPerSec = number(read.nSamplesPerSec);
    read.nAvgBytesPerSec = number(read.nAvgBytesPerSec);
    read.nBlockAlign = word(read.nBlockAlign);
    read.wBitsPerSample = word(read.wBitsPerSample);
    read.cbSize = word(read.cbSize);
    m_waveFormat = read;
    return filer->filerStatus();
}

/// Replaces the bytes by `size` + 1 zero bytes, the first `count` copied from `bytes`.
bool MxDbPhonomark::adoptSamples(const void* bytes, std::size_t count, std::size_t size) {
    auto* block = static_cast<unsigned char*>(std::calloc(size + 1, 1));
    if (!block)
        return false;
    if (count > 0)
        std::memcpy(block, bytes, count);
    delAudioData();
    m_audioBlock = std::make_shared<AudioBlock>(block);
    m_pAudioData = block;
    m_audioDataSize = static_cast<std::uint32_t>(size);
    return true;
}

// --- DXF

Mx::ErrorStatus MxDbPhonomark::dxfOutFields(MxDbDxfFiler* filer) const try {
    assertReadEnabled();
    if (const auto status = MxDbEntity::dxfOutFields(filer); status != Mx::eOk)
        return status;
    if (const auto status = filer->writeString(100, kSubclass); status != Mx::eOk)
        return status;
    if (const auto status = filer->writeInt32(90, kCurrentVersionNumber); status != Mx::eOk)
        return status;
    filer->writeInt16(70, m_type);
    dxfOutLocation(filer);
    filer->writeBool(290, m_bRecord);
    if (m_bRecord)
        dxfOutSamples(filer);
    filer->writeString(1, m_spokesman.text());
    filer->writeString(2, m_datatime.text());
    filer->writeString(3, m_duration.text());
    return filer->filerStatus();
} catch (...) {
    return failed("writing a note", Mx::eItemUnreadable);
}

/// A Reply note writes no location: its handle is kept by the binary form alone.
void MxDbPhonomark::dxfOutLocation(MxDbDxfFiler* filer) const {
    if (m_type == kPointNote) {
        filer->writePoint3d(10, m_position);
    } else if (m_type == kRegionNote) {
        filer->writePoint3d(11, m_extents.minPoint());
        filer->writePoint3d(12, m_extents.maxPoint());
    } else if (m_type == kObjectNote) {
        std::array<wchar_t, 17> text{};
        m_attachId.handle().getIntoAsciiBuffer(text.data());
        filer->writeString(102, text.data());
    }
}

void MxDbPhonomark::dxfOutSamples(MxDbDxfFiler* filer) const {
    const tWAVEFORMATEX& format = m_waveFormat;
    filer->writeInt16(71, static_cast<std::int16_t>(format.wFormatTag));
    filer->writeInt16(72, static_cast<std::int16_t>(format.nChannels));
    filer->writeInt32(91, static_cast<std::int32_t>(format.nSamplesPerSec));
    filer->writeInt32(92, static_cast<std::int32_t>(format.nAvgBytesPerSec));
    filer->writeInt16(73, static_cast<std::int16_t>(format.nBlockAlign));
    filer->writeInt16(74, static_cast<std::int16_t>(format.wBitsPerSample));
    filer->writeInt16(75, static_cast<std::int16_t>(format.cbSize));
    const std::size_t size = m_pAudioData ? m_audioDataSize : 0;
    filer->writeInt32(93, static_cast<std::int32_t>(size));
    std::size_t offset = 0;
    do { // without samples there is one empty chunk
        const std::size_t count = std::min(kChunk, size - offset);
        if (filer->writeBinaryChunk(310, m_pAudioData ? m_pAudioData + offset : nullptr, count) != Mx::eOk)
            return;
        offset += count;
    } while (offset < size);
}

Mx::ErrorStatus MxDbPhonomark::dxfInFields(MxDbDxfFiler* filer) try {
    assertWriteEnabled();
    if (MxDbEntity::dxfInFields(filer) != Mx::eOk || !filer->atSubclassData(kSubclass))
        return filer->filerStatus();
    const bool read = filer->readItem() == Mx::eOk;
    if (!read || filer->itemCode() != 90) {
        if (read)
            filer->pushBackItem();
        filer->setError(Mx::eItemExpected, L"\nError: expected group code %d (version #)", 90);
        return filer->filerStatus();
    }
    if (static_cast<std::uint32_t>(filer->itemInt32()) > kCurrentVersionNumber)
        return Mx::eNewerVersion;

    delAudioData();
    DxfFields fields;
    Mx::ErrorStatus status = Mx::eOk;
    while ((status = filer->readItem()) == Mx::eOk) {
        if (!dxfInItem(filer, fields)) {
            filer->pushBackItem();
            break;
        }
        if (fields.overrun)
            return Mx::eItemUnreadable;
    }
    if (m_type == kRegionNote)
        m_extents.set(fields.minimum, fields.maximum);
    if (status != Mx::eOk && status != Mx::eEndOfItems)
        return Mx::eItemUnreadable; // the filer has said what it could not read
    if (const auto adopted = adoptDxfFields(filer, fields); adopted != Mx::eOk)
        return adopted;
    return filer->filerStatus();
} catch (...) {
    return failed("reading a note", Mx::eItemUnreadable);
}

/// Reads one group; false when it is none of the note's.
bool MxDbPhonomark::dxfInItem(MxDbDxfFiler* filer, DxfFields& fields) {
    switch (filer->itemCode()) {
    case 1:
        m_spokesman = filer->itemString();
        break;
    case 2:
        m_datatime = filer->itemString();
        break;
    case 3:
        m_duration = filer->itemString();
        break;
    case 10:
        m_position = filer->itemPoint3d();
        break;
    case 11:
        fields.minimum = filer->itemPoint3d();
        break;
    case 12:
        fields.maximum = filer->itemPoint3d();
        break;
    case 70:
        m_type = filer->itemInt16();
        break;
    case 93:
        fields.announced = true;
        fields.size = static_cast<std::uint32_t>(filer->itemInt32());
        fields.samples.clear();
        break;
    case 102:
        m_attachId = idOfHandle(MxDbHandle(filer->itemString().text()));
        if (filer->filerType() == MxDbFilerType::kFile)
            refreshExtents();
        break;
    case 290:
        m_bRecord = filer->itemBool();
        break;
    case 310: {
        std::size_t count = 0;
        const auto* bytes = static_cast<const unsigned char*>(filer->itemBytes(count));
        if (count > fields.size - fields.samples.size()) {
            fields.overrun = true;
            filer->setError(Mx::eItemUnreadable, L"\nError: more sound than group 93 announced (%d bytes)",
                            static_cast<int>(fields.size));
        } else {
            fields.samples.insert(fields.samples.end(), bytes, bytes + count);
        }
        break;
    }
    default:
        return dxfInWaveFormatItem(filer);
    }
    return true;
}

bool MxDbPhonomark::dxfInWaveFormatItem(const MxDbDxfFiler* filer) {
    // Some programs write the 16-bit groups as unsigned numbers, which itemInt16 would bring to its bound.
    const auto word = [filer] { return static_cast<std::uint16_t>(filer->itemInt32()); };
    const auto number = [filer] { return static_cast<std::uint32_t>(filer->itemInt32()); };
    switch (filer->itemCode()) {
    case 71:
        m_waveFormat.wFormatTag = word();
        return true;
    case 72:
        m_waveFormat.nChannels = word();
        return true;
    case 73:
        m_waveFormat.nBlockAlign = word();
        return true;
    case 74:
        m_waveFormat.wBitsPerSample = word();
        return true;
    case 75:
        m_waveFormat.cbSize = word();
        return true;
    case 91:
        m_waveFormat.nSamplesPerSec = number();
        return true;
    case 92:
        m_waveFormat.nAvgBytesPerSec = number();
        return true;
    default:
        return false;
    }
}

/// Makes the samples that were read the note's own. What was announced and not delivered is zeros, up to the length of
/// the longest recording: an announcement alone shall not cost memory.
Mx::ErrorStatus MxDbPhonomark::adoptDxfFields(MxDbDxfFiler* filer, DxfFields& fields) {
    if (!fields.announced)
        return Mx::eOk;
    if ((fields.size > fields.samples.size() && fields.size > kLongestRecording) ||
        !adoptSamples(fields.samples.data(), fields.samples.size(), fields.size)) {
        filer->setError(Mx::eItemUnreadable, L"\nError: group 93 announces sound that is not there");
        return Mx::eItemUnreadable;
    }
    return Mx::eOk;
}
