#pragma once

#include <QByteArray>

#include <array>

namespace trevane {

/// Recognises a content that passed by in pieces: its length and a hash of it. The hash is quick, so that a
/// copy does not wait for it, and protects from accidents only.
class ContentPrint {
 public:
  void Add(const QByteArray& piece);

  /// Bytes.
  [[nodiscard]] qint64 Size() const noexcept { return size_; }
  /// Whether both were given the same bytes, whatever their pieces were.
  [[nodiscard]] bool IsSame(const ContentPrint& other) const noexcept;
  /// Whether this can be `other` or a part of it that it begins with. Where it is shorter, only as many bytes
  /// are compared as are kept.
  [[nodiscard]] bool IsStartOf(const ContentPrint& other) const noexcept;

 private:
  /// Independent of each other, because a multiplication has to wait for the one before.
  static constexpr qsizetype kLanes = 4;
  static constexpr qsizetype kBlock = kLanes * 8;

  static constexpr qsizetype kHead = 64 * 1024;

  void AddBlock(const char* block) noexcept;

  qint64 size_ = 0;
  QByteArray head_;
  std::array<quint64, kLanes> lanes_ = {1, 2, 3, 4};
  /// What does not fill a block yet.
  std::array<char, kBlock> rest_ = {};
};

}  // namespace trevane
