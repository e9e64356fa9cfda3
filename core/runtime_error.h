#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace lumiquilt {

/// The classic runtime error numbers that every message of the program names.
enum ErrorNumber : int {
    kInvalidProcedureCall = 5,
    kOverflow = 6,
    kOutOfMemory = 7,
    kSubscriptOutOfRange = 9,
    kDivisionByZero = 11,
    kTypeMismatch = 13,
    kFileNotFound = 53,
    kDiskFull = 61,
    kPermissionDenied = 70,
    kPathFileAccessError = 75,
    kPathNotFound = 76,
    kInvalidPropertyValue = 380,
    kInvalidPicture = 481,
    kCancelSelected = 32755,
};

/// Description that goes with an error number ("Overflow" for 6); unknown numbers
/// read "Application-defined or object-defined error".
std::string errorDescription(int number);

/// A failure raised by the engine or the platform layer, carried up to the
/// command's one handler, which turns it into a message by its stage.
class RuntimeError : public std::runtime_error {
  public:
    explicit RuntimeError(int number);
    RuntimeError(int number, std::string description);

    int number() const { return m_number; }
    const std::string& description() const { return m_description; }

  private:
    int m_number;
    std::string m_description;
};

/// Maps an errno value of a failed file operation to the nearest classic error.
RuntimeError errorFromErrno(int err);

/// Title of the general message box.
inline constexpr std::string_view kGeneralMessageTitle = "Nobody's Perfect";

/// "error 6 (Overflow) at line 1000 of CommandGo"
std::string generalMessage(int number, std::string_view description, int stage,
                           std::string_view routine);
std::string generalMessage(const RuntimeError& error, int stage, std::string_view routine);

}  // namespace lumiquilt
