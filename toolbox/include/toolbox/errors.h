// Status numbers of toolbox calls, in the classic system's numbering (0 = no error), so that
// callers can keep their tests of specific errors.
#pragma once

#include <cstdint>

namespace toolbox {

using OSErr = int16_t;

constexpr OSErr kNoErr = 0;
constexpr OSErr kIOErr = -36;
constexpr OSErr kNoSuchVolume = -35;
constexpr OSErr kBadName = -37;
constexpr OSErr kEndOfFile = -39;
constexpr OSErr kFileNotFound = -43;
constexpr OSErr kDuplicateFile = -48;
constexpr OSErr kParamErr = -50;
constexpr OSErr kPermissionErr = -54;
constexpr OSErr kMemFull = -108;
constexpr OSErr kDirNotFound = -120;
constexpr OSErr kResourceNotFound = -192;
constexpr OSErr kResFileNotOpen = -193;
constexpr OSErr kAddResFailed = -194;
constexpr OSErr kBadResourceFile = -199;
constexpr OSErr kItemNotControl = -30596;

}   // namespace toolbox
