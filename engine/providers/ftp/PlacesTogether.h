#pragma once

#include "base/RunTimeError.h"
#include "engine/providers/ftp/FtpRawFiles.h"

#include <QByteArrayList>

#include <cstddef>
#include <optional>
#include <vector>

namespace trevane::ftp {

/// Gives new files that were built under temporary names their own, on a server that takes several commands
/// in one segment: what a file needs before its rename is asked together with the rename of the one before.
/// A rename is sent only after the server has said that nothing has the name, and that it knows the file.
/// What is not plain is left to who asks one by one.
class PlacesTogether final {
 public:
  struct File {
    Place built;
    Place target;
    /// Of what was built, see TraitCommands.
    QByteArrayList traits = {};
  };
  struct Outcome {
    /// So many, from the first on, have their names.
    std::size_t placed = 0;
    /// Of the next one, which has not got its name. Without it that one is to be placed one by one.
    std::optional<RunTimeError> failure = {};
  };

  PlacesTogether(Server& server, RawServer& raw) noexcept : server_(server), raw_(raw) {}

  /// Whether the server tells in one round trip that a name is free, and takes it together with others: that
  /// is asked where it is not known.
  [[nodiscard]] bool IsPossible();
  /// `files` have other names each.
  [[nodiscard]] Outcome Run(const std::vector<File>& files);

 private:
  /// Which questions tell whether a name is free: both of them, one, or none where the server tells
  /// that it renames onto no file.
  [[nodiscard]] bool AsksFacts() const;
  [[nodiscard]] bool AsksSize() const;
  /// Of the answers from `at` on, which is behind them then.
  [[nodiscard]] bool IsFree(const Place& target, const std::vector<Reply>& replies, std::size_t& at) const;
  [[nodiscard]] QByteArrayList Before(const File& file) const;
  /// Of the answers to Before, from `at` on: nothing stands in the way.
  [[nodiscard]] bool IsReady(const File& file, const std::vector<Reply>& replies, std::size_t at);
  /// After a failure of its rename: it has its name all the same.
  [[nodiscard]] bool HasItsName(const File& file) noexcept;
  /// After an RNFR that is to lead nowhere.
  void GiveUpRename(const File& file);
  /// The same after a failure: the line may be another one by now.
  void GiveUpIfBegun(const File& file) noexcept;

  Server& server_;
  RawServer& raw_;
};

}  // namespace trevane::ftp
