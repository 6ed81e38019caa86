// What zenk-convert and zenkconvert share (client/): the names a format goes
// by, what each pair does with a change of matrix, and the bands a frame is
// cut into. Each table is what both hosts rely on; the end-to-end tests hold
// the tool's bytes to the library's, and show the default matrix (at 576
// and 577 lines) and which sources give alpha.
#include "request.h"
#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

using F = Format;

TEST(Client, EveryNameOfEachFamily) {
    const struct {
        const char* name;
        F format;
        bool alpha_unused;
    } rows[] = {
        {"UYVY16I", F::UYVY16I, false},     {"uyvy16i", F::UYVY16I, false},    {"uyvy422", F::UYVY16I, false},
        {"UYVY", F::UYVY16I, false},        {"yuy2", F::YUYV16I, false},       {"yuyv422", F::YUYV16I, false},
        {"NV16", F::Y8PUV8I, false},        {"VUYA", F::V8U8Y8A8I, false},     {"BGRA", F::BGR32I, false},
        {"BGRx", F::BGR32I, true},          {"bgrx", F::BGR32I, true},         {"BGR", F::BGR24I, false},
        {"bgr24", F::BGR24I, false},        {"GRAY8", F::A8P, false},          {"gray", F::A8P, false},
        {"UYVY16IA8P", F::UYVY16IA8P, false}, {"A8C", F::A8C, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::optional<NamedFormat> f = ParseFormat(row.name);
        ASSERT_TRUE(f.has_value());
        EXPECT_EQ(f->format, row.format);
        EXPECT_EQ(f->alpha_unused, row.alpha_unused);
    }
    for (const char* unknown : {"I420", "UYVY16", "bgr32", "NV12", "", "GRAY16_LE"})
        EXPECT_FALSE(ParseFormat(unknown).has_value()) << unknown;
    // Every name is listed, and each names one format only.
    const std::string list = FormatNameList();
    for (const FormatName& n : AllFormatNames()) {
        EXPECT_NE(list.find(std::string(n.name)), std::string::npos) << n.name;
        EXPECT_EQ(ParseFormat(n.name)->format, n.format.format) << n.name;
    }
}

// An IA8P pair behaves as the pair of its colour parts.
TEST(Client, WhatAChangeOfMatrixDoesPerPair) {
    using M = MatrixChange;
    const struct {
        F src, dst;
        M change;
    } rows[] = {
        {F::UYVY16I, F::UYVY16I, M::Converts},          {F::UYVY16I, F::YUYV16I, M::Converts},
        {F::YUYV16I, F::UYVY16I, M::Converts},          {F::UYVY16IA8P, F::YUYV16IA8P, M::Converts},
        {F::UYVY16I, F::UVYY16I, M::WritesUyvyOrder},   {F::UVYY16I, F::UYVY16I, M::WritesUyvyOrder},
        {F::UYVY16I, F::Y8PUV8I, M::WritesUyvyOrder},   {F::UYVY16I, F::UVYY16IA8P, M::WritesUyvyOrder},
        {F::UVYY16I, F::UYVY16IA8P, M::WritesUyvyOrder}, {F::UYVY16I, F::Y8PUV8IA8P, M::WritesUyvyOrder},
        {F::UYVY16I, F::V8U8Y8A8I, M::Never},           {F::UYVY16I, F::BGR32I, M::NotYuvToYuv},
        {F::BGR32I, F::UYVY16I, M::NotYuvToYuv},        {F::UYVY16IA8P, F::A8P, M::NotYuvToYuv},
    };
    for (const auto& row : rows) {
        const Pair* pair = FindPair(row.src, row.dst);
        ASSERT_NE(pair, nullptr) << Token(row.src) << " -> " << Token(row.dst);
        EXPECT_EQ(MatrixChangeOf(*pair), row.change) << Token(row.src) << " -> " << Token(row.dst);
    }
}

// Bands cover the picture in order, and each starts on a line where every
// plane is at the whole picture's 16-byte residue; a planar source and the
// line-pair modes are one band.
TEST(Client, BandsKeepEveryPlanesResidue) {
    const struct {
        F src, dst;
        int32_t width, height;
        int threads, vertical_mode;
        size_t bands;
    } rows[] = {
        {F::BGR32I, F::UYVY16I, 64, 37, 5, 0, 5},   {F::BGR24I, F::UYVY16IA8P, 22, 37, 8, 0, 5},
        {F::BGR24I, F::BGR24I, 7, 64, 3, 0, 3},     {F::UYVY16I, F::BGR32I, 64, 3, 8, 0, 3},
        {F::Y8PUV8I, F::BGR32I, 64, 64, 4, 0, 1},   {F::BGR32I, F::UYVY16I, 64, 64, 4, 1, 1},
        {F::BGR32I, F::UYVY16I, 64, 64, 1, 0, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << Token(row.src) << " -> " << Token(row.dst) << " " << row.width << "x"
                                          << row.height);
        const Pair& pair = *FindPair(row.src, row.dst);
        const RequestOptions options{.vertical_mode = row.vertical_mode};
        auto picture = [&](F f) {
            const FrameLayout l = LayoutOf(f, row.width, row.height);
            return Picture{f, row.width, row.height, nullptr, static_cast<int32_t>(l.colour_stride), nullptr,
                           static_cast<int32_t>(l.alpha_stride)};
        };
        const Picture src = picture(row.src), dst = picture(row.dst);
        const std::vector<Band> bands = Bands(pair, options, src, dst, row.threads);
        EXPECT_EQ(bands.size(), row.bands);
        int32_t next = 0;
        for (const Band& b : bands) {
            EXPECT_EQ(b.first, next);
            EXPECT_GT(b.count, 0);
            for (int32_t stride : {src.stride, src.alpha_stride, dst.stride, dst.alpha_stride})
                EXPECT_EQ(int64_t{b.first} * stride % 16, 0) << "band at line " << b.first << ", pitch " << stride;
            next = b.first + b.count;
        }
        EXPECT_EQ(next, row.height);
    }
}

}  // namespace
}  // namespace zenk::tool::test
