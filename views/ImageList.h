#pragma once

#include <QFontMetrics>
#include <QHash>
#include <QIcon>
#include <QImage>
#include <QString>

namespace trevane {

/// The 16 by 16 pictures of tree, list, headers and toolbars, by key. The program's own pictures need not be
/// added: they are taken from its resources when they are first asked for, one file a size, so that they are
/// sharp on screens of any resolution.
class ImageList {
 public:
  /// Pictures are 16 by 16 logical pixels.
  static constexpr int kSize = 16;
  /// Logical pixels of a picture beside a text of that font: kSize, and more for a large font.
  [[nodiscard]] static int SizeFor(const QFontMetrics& metrics);
  /// Pixels of this colour are transparent in pictures that are added.
  static constexpr QRgb kMaskColor = qRgb(0xFF, 0x00, 0xFF);
  /// The sizes in pixels in which own pictures are looked for.
  static constexpr int kResourceSizes[] = {16, 24, 32, 48, 64};

  /// `resourcePrefix` and the key in lower case, "-", a size and ".png" name the files of own pictures.
  explicit ImageList(const QString& resourcePrefix = QStringLiteral(":/trevane/icons/"));

  /// Adds a picture; the mask colour becomes transparent. Fails with error::kKeyAlreadyThere.
  void Add(const QString& key, const QImage& picture);
  /// Adds an icon that scales itself. Fails with error::kKeyAlreadyThere.
  void AddIcon(const QString& key, const QIcon& icon);

  /// Added, or among the own pictures.
  [[nodiscard]] bool Contains(const QString& key) const;

  /// Never an empty box: a key without a picture yields that of a file of unknown type, and one drawn here
  /// when even that is missing. Only the empty key yields no icon.
  [[nodiscard]] QIcon Icon(const QString& key) const;

 private:
  [[nodiscard]] QIcon Find(const QString& key) const;
  [[nodiscard]] QIcon DefaultIcon() const;

  QString resourcePrefix_;
  /// Icons that were asked for; a null icon remembers that there is no such picture.
  mutable QHash<QString, QIcon> icons_;
  mutable QIcon drawn_;
};

}  // namespace trevane
