// The preferences file: one small resource file in the user's preferences folder that keeps
// a few settings as resources of type 'VRNX'. Every failure is silent: a setting that cannot be
// read reads as nothing stored, one that cannot be written is lost.
//
// The file, once opened, stays open in the resource chain for the rest of the process; neither
// function closes it.
#pragma once

#include <cstdint>

constexpr uint32_t kPrefsResourceType = 0x56524E58;   // 'VRNX'
constexpr uint32_t kPrefsFileType = 0x70726566;       // 'pref'
constexpr uint32_t kPrefsCreator = 0x56524E58;        // 'VRNX'

// Copies resource 'VRNX' `id` of the preferences file `fileName` into `buffer`: all of it and
// zeros after it when the buffer is larger, else exactly `size` bytes. Returns the number of
// bytes copied; 0 when the folder, the file or the resource is missing.
long GetSettings(int16_t id, char* buffer, long size, const char* fileName);

// Stores `size` bytes of `data` as resource 'VRNX' `id` (named `resourceName` when it is new)
// in the preferences file `fileName`, creating the folder and the file when needed. Returns 0
// on success, else the toolbox status of the step that failed.
int16_t PutSettings(int16_t id, const char* data, long size, const char* resourceName, const char* fileName);
