#pragma once

#include <QString>

#include <exception>

namespace trevane {

/// Error numbers that the program itself tests for. Every other system failure is kWin32Error plus the
/// Windows error number of the failure (see "System Error Codes" in the Windows API documentation).
namespace error {
inline constexpr qint32 kNotFound = static_cast<qint32>(0x80010800);
inline constexpr qint32 kDeviceNotReady = static_cast<qint32>(0x80010015);
inline constexpr qint32 kWin32Error = static_cast<qint32>(0x80070000);
inline constexpr qint32 kAccessDenied = kWin32Error + 5;
inline constexpr qint32 kNotSupported = kWin32Error + 50;
inline constexpr qint32 kExists = kWin32Error + 80;
inline constexpr qint32 kInvalidParameter = kWin32Error + 87;
inline constexpr qint32 kDiskFull = kWin32Error + 112;
inline constexpr qint32 kTimeOut = kWin32Error + 121;
inline constexpr qint32 kInvalidName = kWin32Error + 123;
inline constexpr qint32 kDirectoryNotEmpty = kWin32Error + 145;
/// An observer or the user ended the call.
inline constexpr qint32 kCancelled = kWin32Error + 1223;
inline constexpr qint32 kLogonFailure = kWin32Error + 1326;

/// The errors of a keyed collection.
inline constexpr qint32 kKeyAlreadyThere = 457;
inline constexpr qint32 kNoSuchKey = 5;
inline constexpr qint32 kOutOfRange = 9;
}  // namespace error

/// The only exception type of the program: what a failing member of the engine raises, and the keyed
/// collections too. Routines that answer with a boolean or a code catch it at their one exit.
class RunTimeError : public std::exception {
 public:
  RunTimeError(qint32 number, const QString& description)
      : number_(number), description_(description), what_(description.toUtf8()) {}

  [[nodiscard]] qint32 Number() const noexcept { return number_; }
  /// Text for people; names the path where there is one.
  [[nodiscard]] const QString& Description() const noexcept { return description_; }
  [[nodiscard]] const char* what() const noexcept override { return what_.constData(); }

 private:
  qint32 number_;
  QString description_;
  QByteArray what_;
};

/// The code a routine returns for a failure: the error's number, or -1 when that number is 0.
[[nodiscard]] inline qint32 ResultCode(const RunTimeError& failure) noexcept {
  return failure.Number() != 0 ? failure.Number() : -1;
}

/// The text for an item that is not there.
[[nodiscard]] inline QString ItemNotFoundText(const QString& item) {
  return QStringLiteral("The item was not found: %1").arg(item);
}

/// The error for an item that is known not to be there.
[[nodiscard]] inline RunTimeError ItemNotFound(const QString& item) {
  return {error::kNotFound, ItemNotFoundText(item)};
}

}  // namespace trevane
