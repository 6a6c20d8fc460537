// How the toolbox and the host report a failure: one way, everywhere inside them.
//
// A `Status` says whether a call worked. When it did not, `Message()` says why in words for
// people, naming the file and what is wrong ("prefs.rsrc:3: expected a quoted string",
// "Tamberlyne.bundle: the bundle holds no plug-in module (lib*.so)"), and `Code()` keeps the
// classic status number (kFileNotFound, kBadResourceFile ...) for the places that must answer
// numbers: the calls the plug-in makes keep their OSErr contract and convert at that boundary.
// A `Result<T>` is a Status that carries the value when the call worked.
//
// Both test as bool, true when the call worked:
//
//     toolbox::Result<toolbox::ResourceFile> file = toolbox::LoadResourceFile(path);
//     if (!file) {
//         std::cerr << file.Message() << "\n";   // "<path>: file not found"
//         return 1;
//     }
//     Use(*file);
//
// Neither may be ignored: a dropped failure is how a resource goes missing without a word.
#pragma once

#include "toolbox/errors.h"

#include <optional>
#include <string>
#include <utility>

namespace toolbox {

class [[nodiscard]] Status {
public:
    // The call worked.
    Status() = default;
    static Status Ok() { return Status(); }
    // The call failed: `message` names the file (or the thing) and what is wrong. A `code` of
    // kNoErr is taken as kParamErr, so that a failure never tests as success.
    static Status Failure(std::string message, OSErr code = kParamErr)
    {
        return Status(code == kNoErr ? kParamErr : code, std::move(message));
    }

    explicit operator bool() const { return code_ == kNoErr; }
    OSErr Code() const { return code_; }
    // Empty when the call worked.
    const std::string& Message() const { return message_; }
    // The same failure with `context` in front: "<context>: <message>". Success stays success.
    Status Within(const std::string& context) const { return *this ? *this : Status(code_, context + ": " + message_); }

private:
    Status(OSErr code, std::string message) : code_(code), message_(std::move(message)) {}

    OSErr code_ = kNoErr;
    std::string message_;
};

template <typename T>
class [[nodiscard]] Result {
public:
    Result(const T& value) : value_(value) {}
    Result(T&& value) : value_(std::move(value)) {}
    // A failure; a Status that worked but gave no value is a caller's mistake, kept as a failure.
    Result(Status failure) : status_(failure ? Status::Failure("no value was given", kParamErr) : std::move(failure)) {}

    explicit operator bool() const { return value_.has_value(); }
    const Status& status() const { return status_; }
    OSErr Code() const { return status_.Code(); }
    const std::string& Message() const { return status_.Message(); }

    // Only when the call worked.
    T& operator*() & { return *value_; }
    const T& operator*() const& { return *value_; }
    T&& operator*() && { return std::move(*value_); }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }

private:
    std::optional<T> value_;
    Status status_;
};

}   // namespace toolbox
