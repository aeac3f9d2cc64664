// SPDX-License-Identifier: MIT
// The two filers through which an object writes and reads itself. Reading is reading of untrusted data: a filer
// checks every item's type and length and answers with a status; it never reads or allocates past what it holds.
#pragma once

#include "host/db/object_id.h"
#include "host/ge/geometry.h"
#include "host/rx/status.h"
#include "host/rx/text.h"

#include <cstddef>
#include <cstdint>

/// What a filer files for. The value 0 is compared by modules.
enum class MxDbFilerType : int {
    kFile = 0, ///< saving and opening a drawing
    kUndo = 1, ///< before-images
    kCopy = 2, ///< handing an object over inside the process
};

/// The binary filer: a stream of typed items. A reader reads exactly the sequence that was written; the first item
/// that fails sets the filer's status, and every later call returns that status and leaves its argument alone.
class MxDbDwgFiler {
public:
    virtual ~MxDbDwgFiler() = default;
    virtual MxDbFilerType filerType() const = 0;
    virtual Mx::ErrorStatus filerStatus() const = 0;
    virtual MxDbDatabase* database() const = 0;

    virtual Mx::ErrorStatus writeBool(bool value) = 0;
    virtual Mx::ErrorStatus writeInt16(std::int16_t value) = 0;
    virtual Mx::ErrorStatus writeUInt16(std::uint16_t value) = 0;
    virtual Mx::ErrorStatus writeInt32(std::int32_t value) = 0;
    virtual Mx::ErrorStatus writeUInt32(std::uint32_t value) = 0;
    virtual Mx::ErrorStatus writeDouble(double value) = 0;
    virtual Mx::ErrorStatus writePoint3d(const MxGePoint3d& value) = 0;
    virtual Mx::ErrorStatus writeHandle(const MxDbHandle& value) = 0;
    virtual Mx::ErrorStatus writeString(const wchar_t* value) = 0;
    /// A counted run of raw bytes; `bytes` may be null when `count` is 0.
    virtual Mx::ErrorStatus writeBytes(const void* bytes, std::size_t count) = 0;
    /// A reference that neither owns its object nor keeps it from being purged.
    virtual Mx::ErrorStatus writeSoftPointerId(const MxDbObjectId& id) = 0;
    /// A reference without which the object cannot be (an entity's layer).
    virtual Mx::ErrorStatus writeHardPointerId(const MxDbObjectId& id) = 0;

    virtual Mx::ErrorStatus readBool(bool& value) = 0;
    virtual Mx::ErrorStatus readInt16(std::int16_t& value) = 0;
    virtual Mx::ErrorStatus readUInt16(std::uint16_t& value) = 0;
    virtual Mx::ErrorStatus readInt32(std::int32_t& value) = 0;
    virtual Mx::ErrorStatus readUInt32(std::uint32_t& value) = 0;
    virtual Mx::ErrorStatus readDouble(double& value) = 0;
    virtual Mx::ErrorStatus readPoint3d(MxGePoint3d& value) = 0;
    virtual Mx::ErrorStatus readHandle(MxDbHandle& value) = 0;
    /// On success `value` is a buffer that the caller releases with mxutDelBuffer; null on failure.
    virtual Mx::ErrorStatus readString(wchar_t** value) = 0;
    /// Reads a run of exactly `count` bytes; a run of another length is eItemType.
    virtual Mx::ErrorStatus readBytes(void* bytes, std::size_t count) = 0;
    virtual Mx::ErrorStatus readSoftPointerId(MxDbObjectId& id) = 0;
    virtual Mx::ErrorStatus readHardPointerId(MxDbObjectId& id) = 0;
    /// Bytes that the stream still holds: a bound for what a count read from it may claim.
    virtual std::uint64_t bytesLeft() const = 0;
};

/// The DXF filer: group codes with values. Points are one item (10 with its 20 and 30).
class MxDbDxfFiler {
public:
    virtual ~MxDbDxfFiler() = default;
    virtual MxDbFilerType filerType() const = 0;
    virtual Mx::ErrorStatus filerStatus() const = 0;
    virtual MxDbDatabase* database() const = 0;

    virtual Mx::ErrorStatus writeString(int code, const wchar_t* value) = 0;
    virtual Mx::ErrorStatus writeBool(int code, bool value) = 0;
    virtual Mx::ErrorStatus writeInt16(int code, std::int16_t value) = 0;
    virtual Mx::ErrorStatus writeInt32(int code, std::int32_t value) = 0;
    virtual Mx::ErrorStatus writeUInt32(int code, std::uint32_t value) = 0;
    virtual Mx::ErrorStatus writeDouble(int code, double value) = 0;
    virtual Mx::ErrorStatus writePoint3d(int code, const MxGePoint3d& value) = 0;
    virtual Mx::ErrorStatus writePoint2d(int code, const MxGePoint2d& value) = 0;
    virtual Mx::ErrorStatus writeObjectId(int code, const MxDbObjectId& id) = 0;
    /// One binary chunk of at most 127 bytes; `bytes` may be null when `count` is 0.
    virtual Mx::ErrorStatus writeBinaryChunk(int code, const void* bytes, std::size_t count) = 0;

    /// Moves to the next item. eEndOfItems after the object's last one.
    virtual Mx::ErrorStatus readItem() = 0;
    /// Makes the item just read the next one again.
    virtual Mx::ErrorStatus pushBackItem() = 0;
    /// True when the next item is the subclass marker `name`, which is then consumed.
    virtual bool atSubclassData(const wchar_t* name) = 0;
    /// The current item's group code; its value in the form asked for. A value of another kind is converted where
    /// that makes sense, else 0 or empty; an integer out of range is brought to the nearest bound.
    virtual int itemCode() const = 0;
    virtual bool itemBool() const = 0;
    virtual std::int16_t itemInt16() const = 0;
    virtual std::int32_t itemInt32() const = 0;
    virtual std::uint32_t itemUInt32() const = 0;
    virtual double itemDouble() const = 0;
    virtual MxGePoint3d itemPoint3d() const = 0;
    virtual MxString itemString() const = 0;
    /// The object named by the item's handle; reserved when not read yet. Null for handle 0.
    virtual MxDbObjectId itemObjectId() const = 0;
    /// The bytes of a binary chunk, valid until the next readItem.
    virtual const void* itemBytes(std::size_t& count) const = 0;

    /// Sets the filer's status and the message that tells the user why the record was refused; `format` takes the
    /// arguments of printf.
    virtual void setError(Mx::ErrorStatus status, const wchar_t* format, ...) = 0;
};

/// Allocates a buffer of at least `bytes` bytes, all zero, that the caller releases with mxutDelBuffer. False, with
/// `buffer` null, when there is no memory.
bool mxutNewBuffer(wchar_t*& buffer, std::size_t bytes);

/// Releases a buffer that the host allocated for the caller; null is allowed.
void mxutDelBuffer(wchar_t*& buffer);
