#include "platform/SystemShellIcons.h"

#include "platform/windows/WindowsText.h"

#include <algorithm>

#include <windows.h>

#include <shellapi.h>

namespace trevane {
namespace {

// A folder can hold any number of different extensions; what is remembered has a bound.
constexpr qsizetype kMostKnown = 2048;

constexpr UINT kByNameAlone = SHGFI_USEFILEATTRIBUTES;

/// A bitmap's pixels as 32 bits each, top down.
QByteArray PixelsOf(HDC screen, HBITMAP bitmap, int width, int height) {
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof info.bmiHeader;
  info.bmiHeader.biWidth = width;
  info.bmiHeader.biHeight = -height;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  QByteArray pixels(qsizetype(width) * height * 4, '\0');
  const int lines =
      GetDIBits(screen, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
  return lines == height ? pixels : QByteArray();
}

/// Colours as the picture has them become premultiplied; where it has no transparency of its own, the mask
/// decides what is visible.
void Blend(QByteArray& colour, const QByteArray& mask) {
  auto* pixel = reinterpret_cast<quint32*>(colour.data());
  const auto* hidden = reinterpret_cast<const quint32*>(mask.constData());
  const qsizetype count = colour.size() / 4;
  const bool hasAlpha = std::any_of(pixel, pixel + count, [](quint32 value) { return (value >> 24) != 0; });
  for (qsizetype i = 0; i < count; ++i) {
    const quint32 alpha =
        hasAlpha ? pixel[i] >> 24 : (!mask.isEmpty() && (hidden[i] & 0xFFFFFF) != 0 ? 0 : 255);
    const auto part = [&](int shift) { return ((pixel[i] >> shift & 0xFF) * alpha + 127) / 255 << shift; };
    pixel[i] = alpha << 24 | part(16) | part(8) | part(0);
  }
}

bool TakePixels(HICON handle, ShellIcon& icon) {
  ICONINFO parts{};
  if (GetIconInfo(handle, &parts) == FALSE) {
    return false;
  }
  BITMAP size{};
  if (parts.hbmColor != nullptr && GetObjectW(parts.hbmColor, sizeof size, &size) != 0) {
    const HDC screen = GetDC(nullptr);
    icon.width = size.bmWidth;
    icon.height = size.bmHeight;
    icon.pixels = PixelsOf(screen, parts.hbmColor, icon.width, icon.height);
    if (!icon.pixels.isEmpty()) {
      Blend(icon.pixels, PixelsOf(screen, parts.hbmMask, icon.width, icon.height));
    }
    ReleaseDC(nullptr, screen);
  }
  DeleteObject(parts.hbmColor);
  DeleteObject(parts.hbmMask);
  return !icon.pixels.isEmpty();
}

}  // namespace

/// The shell, asked by a name that need not exist.
class SystemShellIcons::Source {
 public:
  static std::optional<ShellFileInfo> Ask(const QString& probe, DWORD attributes, UINT flags) {
    const auto name = windowstext::ToAnsi(probe);
    SHFILEINFOA answer{};
    if (!name ||
        SHGetFileInfoA(
            name->constData(), attributes, &answer, sizeof answer,
            kByNameAlone | SHGFI_ICON | SHGFI_SMALLICON | SHGFI_SYSICONINDEX | SHGFI_TYPENAME | flags) == 0 ||
        answer.hIcon == nullptr) {
      return std::nullopt;
    }
    ShellFileInfo info;
    info.icon.index = answer.iIcon;
    info.typeName = windowstext::FromAnsi(answer.szTypeName);
    const bool taken = TakePixels(answer.hIcon, info.icon);
    DestroyIcon(answer.hIcon);
    return taken ? std::optional(info) : std::nullopt;
  }
};

SystemShellIcons::SystemShellIcons() = default;
SystemShellIcons::~SystemShellIcons() = default;

std::optional<ShellFileInfo> SystemShellIcons::ForExtension(const QString& probe) {
  const auto known = known_.constFind(probe);
  if (known != known_.constEnd()) {
    return *known;
  }
  const auto info = Source::Ask(probe, FILE_ATTRIBUTE_NORMAL, 0);
  if (info) {
    if (known_.size() >= kMostKnown) {
      known_.clear();
    }
    known_.insert(probe, *info);
  }
  return info;
}

std::optional<ShellFileInfo> SystemShellIcons::ForFolder(bool open) {
  return Source::Ask(QStringLiteral("folder"), FILE_ATTRIBUTE_DIRECTORY, open ? SHGFI_OPENICON : 0);
}

}  // namespace trevane
