// SPDX-License-Identifier: MIT
#include "merix/io/merix_schema.h"

#include <new>
#include <zstd.h>

namespace merix::io {
namespace {

/// Measured on recorded speech and on DXF text: higher levels cost time and gain nothing worth it.
constexpr int kLevel = 1;
/// Readers refuse a drawing whose bytes are unpacked from less than a thousandth: what packs better, like a recorded
/// silence, is stored as it is.
constexpr std::size_t kBestRatio = 512;

} // namespace

Packer::Packer()
    : m_compressor(ZSTD_createCCtx())
    , m_decompressor(ZSTD_createDCtx()) {
    if (!m_compressor || !m_decompressor)
        throw std::bad_alloc();
    ZSTD_CCtx_setParameter(static_cast<ZSTD_CCtx*>(m_compressor), ZSTD_c_compressionLevel, kLevel);
    ZSTD_CCtx_setParameter(static_cast<ZSTD_CCtx*>(m_compressor), ZSTD_c_checksumFlag, 1);
}

Packer::~Packer() {
    ZSTD_freeCCtx(static_cast<ZSTD_CCtx*>(m_compressor));
    ZSTD_freeDCtx(static_cast<ZSTD_DCtx*>(m_decompressor));
}

std::string_view Packer::pack(std::string_view bytes) {
    m_buffer.resize(ZSTD_compressBound(bytes.size()));
    const std::size_t size = ZSTD_compress2(static_cast<ZSTD_CCtx*>(m_compressor), m_buffer.data(), m_buffer.size(),
                                            bytes.data(), bytes.size());
    if (ZSTD_isError(size) || size >= bytes.size() || size < bytes.size() / kBestRatio)
        return bytes;
    return std::string_view(m_buffer.data(), size);
}

bool Packer::unpack(std::string_view packed, std::size_t size, std::string& out) {
    if (packed.size() == size) {
        out.append(packed);
        return true;
    }
    if (packed.size() > size || ZSTD_getFrameContentSize(packed.data(), packed.size()) != size)
        return false;
    const std::size_t before = out.size();
    out.resize(before + size);
    return ZSTD_decompressDCtx(static_cast<ZSTD_DCtx*>(m_decompressor), out.data() + before, size, packed.data(),
                               packed.size()) == size;
}

} // namespace merix::io
