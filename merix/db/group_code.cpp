// SPDX-License-Identifier: MIT
#include "merix/db/group_code.h"

namespace merix::db {

namespace {

struct Range {
    int first, last;
    GroupKind kind;
};

/// As the DXF reference groups them.
constexpr Range kRanges[] = {
    {0, 9, GroupKind::kText},        {10, 18, GroupKind::kPoint},      {19, 59, GroupKind::kReal},
    {60, 79, GroupKind::kInt16},     {90, 99, GroupKind::kInt32},      {100, 105, GroupKind::kText},
    {110, 112, GroupKind::kPoint},   {113, 149, GroupKind::kReal},     {160, 169, GroupKind::kInt64},
    {170, 179, GroupKind::kInt16},   {210, 211, GroupKind::kPoint},    {212, 239, GroupKind::kReal},
    {270, 289, GroupKind::kInt16},   {290, 299, GroupKind::kBool},     {300, 309, GroupKind::kText},
    {310, 319, GroupKind::kBinary},  {320, 369, GroupKind::kHandle},   {370, 389, GroupKind::kInt16},
    {390, 399, GroupKind::kHandle},  {400, 409, GroupKind::kInt16},    {410, 419, GroupKind::kText},
    {420, 429, GroupKind::kInt32},   {430, 439, GroupKind::kText},     {440, 459, GroupKind::kInt32},
    {460, 469, GroupKind::kReal},    {470, 479, GroupKind::kText},     {480, 481, GroupKind::kHandle},
    {1000, 1003, GroupKind::kText},  {1004, 1004, GroupKind::kBinary}, {1005, 1005, GroupKind::kHandle},
    {1010, 1013, GroupKind::kPoint}, {1014, 1059, GroupKind::kReal},   {1060, 1070, GroupKind::kInt16},
    {1071, 1071, GroupKind::kInt32},
};

} // namespace

GroupKind groupKind(int code) {
    for (const Range& range : kRanges) {
        if (code >= range.first && code <= range.last)
            return range.kind;
    }
    return GroupKind::kText;
}

} // namespace merix::db
