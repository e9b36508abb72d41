#pragma once

#include "engine/remote/RemoteFileSystem.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// Connects several controllers, at most 8 at once. The window's thread's alone.
///
/// They are taken one after the other, and each wait is for one of them; the others go on meanwhile, with
/// the limits that each call has. The destructor gives up those that were not taken, and waits for none.
class RemoteOpenings final {
 public:
  /// One controller.
  struct Wanted {
    RemoteConnection::Opening opening;
    /// The folder that is opened first; it is looked for together with the connecting. May be empty.
    QString root = {};
  };
  /// What was found at a path; nothing for a missing item.
  struct Root {
    QString path;
    std::optional<FileEntry> entry;
  };
  struct Opened {
    std::shared_ptr<RemoteFileSystem> files;
    /// Nothing where it was not looked for, or that failed.
    std::optional<Root> root;
  };

  RemoteOpenings(RemoteContext& context, const std::vector<Wanted>& wanted);
  ~RemoteOpenings();
  RemoteOpenings(const RemoteOpenings&) = delete;
  RemoteOpenings& operator=(const RemoteOpenings&) = delete;

  /// Begins as many as may run. Nothing is waited for.
  void Begin();

  /// Waits for one of them, and fails as its connecting did. A cancel of this wait is one of all: with
  /// error::kCancelled fails each that is not connected then.
  [[nodiscard]] Opened Take(size_t position);

  /// Ends all that are not connected yet. Those that are can still be taken.
  void Cancel();

 private:
  struct Part;
  /// True when there is nothing more to wait for.
  [[nodiscard]] static bool IsOver(const Part& part);
  static void Look(FileSystem& files, const QString& text, std::optional<Root>& root);
  static void BeginPart(Part& part);
  void Wait(const Part& part);

  RemoteContext& context_;
  std::vector<Part> parts_;
  /// The first that was not begun.
  size_t next_ = 0;
  bool isCancelled_ = false;
};

}  // namespace trevane
