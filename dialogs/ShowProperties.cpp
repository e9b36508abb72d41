#include "dialogs/ShowProperties.h"

#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "engine/controllers/FindControllerOfAddress.h"
#include "engine/items/clsIxoFile.h"
#include "engine/model/IxoController.h"
#include "engine/model/IxoControllers.h"
#include "prompts/ShowFailure.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/AttributeLetters.h"
#include "views/addresses/DriveTable.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"

#include <array>
#include <cmath>
#include <utility>

namespace trevane {

namespace {

const QString kControllerLabels = QStringLiteral("Controller Name,Provider Name,Machine Name,Option,Root");
const QString kFileLabels = QStringLiteral("Name,Size,Type,Modified,Accessed,Created,Attributes");

PropertyTable EmptyTable(const QString& labels) {
  PropertyTable table;
  table.labels = labels.split(u',');
  table.values.resize(table.labels.size());
  return table;
}

/// Instead of what could not be read.
QStringList WhyNoDetails(qint32 number, const QString& reason) {
  if (number == error::kCancelled) {
    return {};
  }
  return {QStringLiteral("No more can be read: ") + ReasonOf(number, reason)};
}

QStringList ControllerDetails(EngineSession& session, const clsIxoCtrl& record) {
  if (!session.gIxoControllers) {
    return {};
  }
  try {
    const auto controller = session.gIxoControllers->Item(record.CtrlIdx());
    return controller ? controller->Details() : QStringList();
  } catch (const RunTimeError& failure) {
    return WhyNoDetails(failure.Number(), failure.Description());
  }
}

PropertyTable ControllerTable(const QString& path, const PropertySources& sources) {
  PropertyTable table = EmptyTable(kControllerLabels);
  if (const auto record = FindControllerOfAddress(sources.files.Session().gIxoCtrls(), path)) {
    // The name shown in the views, not the one that was typed.
    table.values = {record->RealCtrlName(), record->ProvName(), record->MachineName(), record->CtrlOption(),
                    record->Root()};
    table.details = ControllerDetails(sources.files.Session(), *record);
  }
  return table;
}

/// The tag with the kind of the drive, which an item of the list does not have.
qint32 WithDriveKind(qint32 tag, const QString& path, const DriveTable& drives) {
  if (!IsDrive(tag) || DriveKindBits(tag) != 0) {
    return tag;
  }
  QString name = path;
  if (name.endsWith(kAddressSeparator)) {
    name.chop(1);
  }
  name = name.mid(name.lastIndexOf(kAddressSeparator) + 1);
  for (const DriveInfo& drive : drives.Drives()) {
    if (EqualIgnoringCase(drive.Text, name)) {
      return tag | LookOfDrive(drive.DriveType).kindBit;
    }
  }
  return tag;
}

PropertyTable FileTable(const QString& path, qint32 tag, const PropertySources& sources) {
  PropertyTable table = EmptyTable(kFileLabels);
  clsIxoFile file = sources.files.FileAt(path);
  if (file.Result() != 0) {
    return table;
  }

  const QString name = file.Name();
  table.values.first() = name;
  const qint32 attributes = file.FileAttribute();
  const bool readAttributes = file.Result() == 0;
  // Nothing more is read after a Cancel.
  if (file.Result() == error::kCancelled) {
    return table;
  }
  const bool isDrive = IsDrive(tag);
  const bool isFolder = !isDrive && ((readAttributes ? attributes : tag) & kFolderBit) != 0;
  // The content of a folder is not counted, and the size of its own entry means nothing.
  const qint64 size = isFolder || isDrive ? -1 : file.Size64();
  const bool readSize = file.Result() == 0;
  if (file.Result() == error::kCancelled) {
    return table;
  }
  QString type;
  if (isDrive) {
    type = DriveTypeName(WithDriveKind(tag, path, sources.files.Drives()));
  } else {
    type = isFolder           ? QStringLiteral("File Folder")
           : sources.typeText ? sources.typeText(name)
                              : file.FileType();
  }
  table.values = {name,
                  readSize ? PropertySizeText(size) : QString(),
                  type,
                  sources.dateText(file.ModifiedDate()),
                  sources.dateText(file.AccessedDate()),
                  sources.dateText(file.CreatedDate()),
                  readAttributes ? AttributeLetters(attributes) : QString()};
  if (!isDrive) {
    table.details = file.Details();
    if (file.Result() != 0) {
      table.details = WhyNoDetails(file.Result(), file.ResultText());
    }
  }
  return table;
}

}  // namespace

QString DriveTypeName(qint32 tag) {
  static const std::array<std::pair<qint32, QString>, 6> kNames = {
      {{TAG_QUESTION, QStringLiteral("Unknown")},
       {TAG_FDISK, QStringLiteral("Removable")},
       {TAG_HDD, QStringLiteral("Fixed")},
       {TAG_REMOTE, QStringLiteral("Remote")},
       {TAG_CDROM, QStringLiteral("CDRROM")},
       {TAG_RAMDISK, QStringLiteral("RAM Disk")}}};
  for (const auto& [bit, name] : kNames) {
    if ((tag & bit) != 0) {
      return name;
    }
  }
  return {};
}

QString PropertySizeText(qint64 size, const QLocale& locale) {
  if (size < 0) {
    return {};
  }
  QLocale digits =
      locale.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : locale;
  digits.setNumberOptions(QLocale::DefaultNumberOptions);
  const QString bytes =
      digits.toString(size) + (size == 1 ? QStringLiteral(" byte") : QStringLiteral(" bytes"));
  constexpr double kStep = 1024;
  if (static_cast<double>(size) < kStep) {
    return bytes;
  }

  static const std::array<QString, 6> kUnits = {QStringLiteral("KiB"), QStringLiteral("MiB"),
                                                QStringLiteral("GiB"), QStringLiteral("TiB"),
                                                QStringLiteral("PiB"), QStringLiteral("EiB")};
  double figure = static_cast<double>(size) / kStep;
  size_t unit = 0;
  // A figure that would be rounded up to 1024 is one of the next unit.
  while (figure >= kStep - 0.5 && unit + 1 < kUnits.size()) {
    figure /= kStep;
    ++unit;
  }
  // Three digits that count, without zeros behind the point.
  const int decimals = figure < 9.995 ? 2 : figure < 99.95 ? 1 : 0;
  QLocale rounded = digits;
  rounded.setNumberOptions(QLocale::OmitGroupSeparator);
  QString text = rounded.toString(figure, 'f', decimals);
  if (decimals > 0) {
    while (text.endsWith(rounded.zeroDigit())) {
      text.chop(rounded.zeroDigit().size());
    }
    if (text.endsWith(rounded.decimalPoint())) {
      text.chop(rounded.decimalPoint().size());
    }
  }
  return bytes + QStringLiteral(" (") + text + u' ' + kUnits[unit] + u')';
}

std::optional<PropertyTable> MakePropertyTable(const QString& path, qint32 tag,
                                               const PropertySources& sources) {
  if (IsWorkspace(tag) || path.isEmpty()) {
    return std::nullopt;
  }
  return (tag & TAG_COMPUTER) != 0 ? ControllerTable(path, sources) : FileTable(path, tag, sources);
}

void ShowProperties(const QString& path, qint32 tag, const PropertySources& sources) {
  if (const auto table = MakePropertyTable(path, tag, sources)) {
    sources.files.Prompts().ShowProperties(*table);
  }
}

}  // namespace trevane
