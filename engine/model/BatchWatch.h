#pragma once

#include <QtGlobal>

#include <functional>

namespace trevane {

/// More files of a batch that were read, or written.
struct BatchStep {
  qint64 files = 0;
  /// Of their contents.
  qint64 bytes = 0;
};

/// Sees each file of ReadMany and WriteMany as soon as its content was read or written, while it lives, on
/// its own thread. A batch passes through many layers, of which only the first and the last know of single
/// files. What is seen is for people: a file that was written may still fail to get its name.
class BatchWatch final {
 public:
  /// Called in the middle of the batch: it calls nothing of the engine, and throws nothing.
  using Receiver = std::function<void(const BatchStep& step)>;

  /// A watch within a watch takes its place. Null sees nothing.
  explicit BatchWatch(Receiver receive);
  ~BatchWatch();
  BatchWatch(const BatchWatch&) = delete;
  BatchWatch& operator=(const BatchWatch&) = delete;

  /// Of the watch that lives on this thread; null where there is none.
  [[nodiscard]] static Receiver Current();
  /// For whoever reads or writes a file of a batch.
  static void FileDone(qint64 bytes);

 private:
  const Receiver receive_;
  const BatchWatch* const around_;
};

}  // namespace trevane
