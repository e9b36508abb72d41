#pragma once

#include "tests/support/ftp/FtpVices.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>

#include <functional>
#include <mutex>
#include <optional>

namespace trevane::test {

struct FtpTestCounts {
  int connections = 0;
  /// Clients at this moment.
  int clients = 0;
  int logOns = 0;
  int dataConnections = 0;
  /// How often the server has waited for a client: commands that came alone, and data connections.
  int roundTrips = 0;
  int blocks = 0;
  QHash<QByteArray, int> byName = {};
  /// All commands as they came, passwords hidden.
  QByteArrayList lines = {};
};

/// What the scripted server is told and what it has seen, for all threads.
class FtpTestScript final {
 public:
  /// Called on a thread of the server before the work of each command; the name is in capital letters.
  using Hook = std::function<std::optional<FtpFault>(const QByteArray& name, const QByteArray& argument)>;

  explicit FtpTestScript(FtpVices vices) : vices_(std::move(vices)) {}

  [[nodiscard]] FtpVices Vices() const;
  void Change(const std::function<void(FtpVices& vices)>& change);
  [[nodiscard]] FtpTestCounts Counts() const;
  /// The numbers of clients stay.
  void ClearCounts();
  void Count(const std::function<void(FtpTestCounts& counts)>& count);

  void SetHook(Hook hook);
  /// Counts from here: what happens at the `at`th command (1 is the next), or at the `at`th one of that name,
  /// and at those behind it, `times` in all.
  void ArmCommand(int at, const FtpFault& fault, const QByteArray& name = {}, int times = 1);
  /// The same for the blocks of files that are stored or retrieved.
  void ArmBlock(int at, const FtpFault& fault);
  void Disarm();
  /// How often a fault of ArmCommand or ArmBlock has struck since it was armed.
  [[nodiscard]] int FaultCount() const;

  // For the sessions of the server.
  [[nodiscard]] std::optional<FtpFault> OnCommand(const QByteArray& name, const QByteArray& argument);
  [[nodiscard]] std::optional<FtpFault> OnBlock();
  /// Takes room for so many bytes; how many of them fit.
  [[nodiscard]] qint64 TakeRoom(qint64 bytes);

 private:
  struct Armed {
    int at = 0;
    int times = 1;
    int seen = 0;
    QByteArray name = {};
    FtpFault fault = {};

    [[nodiscard]] bool Strikes();
  };

  mutable std::mutex mutex_;
  FtpVices vices_;
  FtpTestCounts counts_;
  Hook hook_;
  Armed command_;
  Armed block_;
  int faults_ = 0;
};

}  // namespace trevane::test
