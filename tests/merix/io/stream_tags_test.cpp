// SPDX-License-Identifier: MIT
#include "merix/io/stream_tags.h"

#include "merix/io/dxf_out_filer.h"
#include "merix/io/dxf_value.h"

#include <gtest/gtest.h>

namespace merix::io {
namespace {

std::string noise(std::size_t size) {
    std::string bytes;
    std::uint32_t state = 7;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>((state = state * 1664525U + 1013904223U) >> 24);
    return bytes;
}

std::string tagsWith(std::string_view bytes, std::size_t chunk) {
    std::string tags;
    appendTag(tags, 100, "MxDbSample", "\n");
    for (std::size_t at = 0; at < bytes.size(); at += chunk)
        appendTag(tags, 310, fromBytes(bytes.data() + at, std::min(chunk, bytes.size() - at)), "\n");
    appendTag(tags, 1, " words ", "\n");
    return tags;
}

std::string unpacked(std::string_view packed, std::string_view stream) {
    std::string tags = "before";
    return unpackTags(packed, stream, tags) ? tags.substr(6) : "refused, " + tags;
}

TEST(StreamTags, ARecordingIsStoredOnce) {
    const std::string bytes = noise(480'000), stream = "head" + bytes + "tail", tags = tagsWith(bytes, 127);
    const std::string packed = packTags(tags, stream);
    EXPECT_EQ(packed, "100\nMxDbSample\n310\n@4 480000 127\n  1\n words \n");
    EXPECT_EQ(unpacked(packed, stream), tags);
}

TEST(StreamTags, RunsOfEverySizeComeBack) {
    for (const std::size_t size : {0U, 1U, 63U, 64U, 126U, 127U, 128U, 254U, 255U, 1000U}) {
        for (const std::size_t chunk : {1U, 127U, 255U}) {
            const std::string bytes = noise(size), tags = tagsWith(bytes, chunk);
            for (const std::string& stream : {bytes, "x" + bytes, std::string(), noise(2000)})
                EXPECT_EQ(unpacked(packTags(tags, stream), stream), tags) << size << ' ' << chunk;
        }
    }
}

TEST(StreamTags, ChunksOfUnlikeSizesAndGroupsComeBack) {
    const std::string bytes = noise(1000);
    std::string tags;
    std::size_t at = 0;
    for (const auto& [code, size] : {std::pair{310, 100U},
                                     {310, 100U},
                                     {310, 50U},
                                     {310, 100U},
                                     {310, 0U},
                                     {311, 100U},
                                     {310, 120U},
                                     {310, 127U},
                                     {1004, 127U},
                                     {310, 0U}}) {
        appendTag(tags, code, fromBytes(bytes.data() + at, size), "\n");
        at += size;
    }
    appendTag(tags, 310, "no bytes", "\n");
    EXPECT_EQ(unpacked(packTags(tags, bytes), bytes), tags);
}

TEST(StreamTags, PlacesOutsideTheStreamAreRefused) {
    const std::string stream = noise(200);
    for (const char* value : {"@0 201 127", "@1 200 127", "@201 1 1", "@0 100 0", "@0 100 256", "@0 0 1", "@0 100",
                              "@0 100 127 1", "@", "@-1 5 5", "@18446744073709551615 2 1", "@2 18446744073709551615 1"})
        EXPECT_EQ(unpacked("310\n" + std::string(value) + "\n", stream), "refused, before") << value;
    EXPECT_EQ(unpacked("310\n", stream), "refused, before");
    EXPECT_EQ(unpacked("code\nvalue\n", stream), "refused, before");
}

TEST(StreamTags, BytesNamedAgainAndAgainAreRefused) {
    const std::string stream = noise(10'000);
    std::string packed;
    for (int i = 0; i < 1000; ++i)
        packed += "310\n@0 10000 255\n";
    EXPECT_EQ(unpacked(packed, stream), "refused, before");
}

} // namespace
} // namespace merix::io
