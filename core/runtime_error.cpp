#include "core/runtime_error.h"

#include <cerrno>

namespace lumiquilt {

std::string errorDescription(int number) {
    switch (number) {
        case kInvalidProcedureCall:
            return "Invalid procedure call or argument";
        case kOverflow:
            return "Overflow";
        case kOutOfMemory:
            return "Out of memory";
        case kSubscriptOutOfRange:
            return "Subscript out of range";
        case kDivisionByZero:
            return "Division by zero";
        case kTypeMismatch:
            return "Type mismatch";
        case kFileNotFound:
            return "File not found";
        case kDiskFull:
            return "Disk full";
        case kPermissionDenied:
            return "Permission denied";
        case kPathFileAccessError:
            return "Path/File access error";
        case kPathNotFound:
            return "Path not found";
        case kInvalidPropertyValue:
            return "Invalid property value";
        case kInvalidPicture:
            return "Invalid picture";
        case kCancelSelected:
            return "Cancel was selected";
        default:
            return "Application-defined or object-defined error";
    }
}

RuntimeError::RuntimeError(int number) : RuntimeError(number, errorDescription(number)) {}

RuntimeError::RuntimeError(int number, std::string description)
    : std::runtime_error(description), m_number(number), m_description(std::move(description)) {}

RuntimeError errorFromErrno(int err) {
    switch (err) {
        case ENOENT:
            return RuntimeError(kFileNotFound);
        case ENOTDIR:
            return RuntimeError(kPathNotFound);
        case EACCES:
        case EPERM:
        case EROFS:
            return RuntimeError(kPermissionDenied);
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return RuntimeError(kDiskFull);
        case ENOMEM:
            return RuntimeError(kOutOfMemory);
        default:
            return RuntimeError(kPathFileAccessError);
    }
}

std::string generalMessage(int number, std::string_view description, int stage,
                           std::string_view routine) {
    std::string text = "error ";
    text += std::to_string(number);
    text += " (";
    text += description;
    text += ") at line ";
    text += std::to_string(stage);
    text += " of ";
    text += routine;
    return text;
}

std::string generalMessage(const RuntimeError& error, int stage, std::string_view routine) {
    return generalMessage(error.number(), error.description(), stage, routine);
}

}  // namespace lumiquilt
