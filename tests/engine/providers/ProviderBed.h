#pragma once

#include "engine/files/FileSystem.h"

#include <QString>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <vector>

namespace trevane::test {

/// One provider set up for the conformance suite: an empty folder to work in, and changes that bypass the
/// provider.
class ProviderBed {
 public:
  virtual ~ProviderBed() = default;

  [[nodiscard]] virtual FileSystem& Files() = 0;
  /// An empty folder that the test may fill.
  [[nodiscard]] virtual QString Base() const = 0;
  /// False where the provider has no links.
  virtual bool MakeLink(const QString& path, const QString& target) = 0;
  /// New content for a link is written to what it leads to; else it is refused.
  [[nodiscard]] virtual bool WritesThroughLinks() const { return true; }
  virtual bool MakeDevice(const QString& path) = 0;
  virtual void SetModified(const QString& path, Date modified) = 0;
  /// Dates of files can be set.
  [[nodiscard]] virtual bool SetsDates() const { return true; }
  /// Every name can be made and listed; else which ones. The names of other systems and those that are no
  /// text are asked about below.
  [[nodiscard]] virtual bool HoldsName(const QString& /*name*/) const { return true; }
  /// The precision of times that were set.
  [[nodiscard]] virtual qint64 TimePrecision() const = 0;
  /// Names may contain bytes that are no text.
  [[nodiscard]] virtual bool HoldsAnyBytes() const = 0;
  /// Names of devices, names that end with a dot or a blank, and names with characters that are reserved on
  /// Windows are refused.
  [[nodiscard]] virtual bool RefusesNamesOfWindows() const { return false; }
  /// A dot in front of a name hides the item.
  [[nodiscard]] virtual bool HidesDotNames() const { return true; }
  /// Only what every file system has: listings come in one batch, folders have no times to keep, and links
  /// are not copied.
  [[nodiscard]] virtual bool IsPlain() const { return false; }
  /// Items can be given another name.
  [[nodiscard]] virtual bool Renames() const { return true; }
  /// Items have dates before 1970.
  [[nodiscard]] virtual bool HoldsEarlyDates() const { return true; }
  /// The number of characters that every path may have.
  [[nodiscard]] virtual qsizetype LongestPath() const { return 8000; }
};

struct ProviderCase {
  const char* name;
  /// Null where what it needs is missing; `missing` tells it then.
  std::function<std::unique_ptr<ProviderBed>()> make;
  std::function<QString()> missing = {};
};

void PrintTo(const ProviderCase& one, std::ostream* out);
[[nodiscard]] std::string NameOfCase(const ::testing::TestParamInfo<ProviderCase>& info);

/// All providers, a line each.
[[nodiscard]] std::vector<ProviderCase> AllProviders();

/// The base of all parts of the conformance suite.
class ConformanceTest : public ::testing::TestWithParam<ProviderCase> {
 protected:
  void SetUp() override;

  [[nodiscard]] FileSystem& Files() { return bed_->Files(); }
  [[nodiscard]] ProviderBed& Bed() { return *bed_; }
  /// Identities tell an item from another one that has taken its place.
  [[nodiscard]] bool TellsItemsApart();
  /// A path below the folder of the test.
  [[nodiscard]] QString At(const QString& relative) const { return bed_->Base() + u'\\' + relative; }
  [[nodiscard]] bool IsThere(const QString& path);
  [[nodiscard]] QStringList NamesIn(const QString& folder);
  /// The whole tree below a folder: paths, kinds, contents.
  [[nodiscard]] QStringList TreeOf(const QString& folder);
  /// The entry that the listing of its folder has for a path below the test's folder.
  [[nodiscard]] FileEntry Listed(const QString& folder, const QString& name);

 private:
  std::unique_ptr<ProviderBed> bed_;
};

/// The names of the items in a folder, sorted.
[[nodiscard]] QStringList NamesIn(FileSystem& files, const QString& folder);

/// The number of the RunTimeError that `work` throws, 0 when it succeeds.
[[nodiscard]] qint32 ErrorOf(const std::function<void()>& work);
/// The text of the RunTimeError, empty when `work` succeeds.
[[nodiscard]] QString ErrorTextOf(const std::function<void()>& work);

}  // namespace trevane::test
