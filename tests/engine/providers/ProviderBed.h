#pragma once

#include "engine/files/FileSystem.h"

#include <QString>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <vector>

namespace trevane::test {

/// One provider made ready for the conformance suite: an empty folder to work in, and what tests must do
/// behind its back.
class ProviderBed {
 public:
  virtual ~ProviderBed() = default;

  [[nodiscard]] virtual FileSystem& Files() = 0;
  /// An empty folder that the test may fill.
  [[nodiscard]] virtual QString Base() const = 0;
  /// False where the provider has no links.
  virtual bool MakeLink(const QString& path, const QString& target) = 0;
  virtual bool MakeDevice(const QString& path) = 0;
  virtual void SetModified(const QString& path, Date modified) = 0;
  /// How far a time may be off once it has been put.
  [[nodiscard]] virtual qint64 TimePrecision() const = 0;
  /// Names may hold bytes that are no text.
  [[nodiscard]] virtual bool HoldsAnyBytes() const = 0;
  /// Names of devices, with a dot or blank at their end, or with characters that are reserved on Windows are
  /// not made.
  [[nodiscard]] virtual bool RefusesNamesOfWindows() const { return false; }
  /// A dot in front of a name hides the item.
  [[nodiscard]] virtual bool HidesDotNames() const { return true; }
  /// Characters that a path may surely have.
  [[nodiscard]] virtual qsizetype LongestPath() const { return 8000; }
};

struct ProviderCase {
  const char* name;
  std::function<std::unique_ptr<ProviderBed>()> make;
};

void PrintTo(const ProviderCase& one, std::ostream* out);
[[nodiscard]] std::string NameOfCase(const ::testing::TestParamInfo<ProviderCase>& info);

/// Every provider there is, a line each.
[[nodiscard]] std::vector<ProviderCase> AllProviders();

/// What every part of the conformance suite derives from.
class ConformanceTest : public ::testing::TestWithParam<ProviderCase> {
 protected:
  void SetUp() override { bed_ = GetParam().make(); }

  [[nodiscard]] FileSystem& Files() { return bed_->Files(); }
  [[nodiscard]] ProviderBed& Bed() { return *bed_; }
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

/// Of what is in a folder, in order.
[[nodiscard]] QStringList NamesIn(FileSystem& files, const QString& folder);

/// The number of the RunTimeError that `work` fails with; 0 when it does not fail.
[[nodiscard]] qint32 ErrorOf(const std::function<void()>& work);
/// Its text; empty when it does not fail.
[[nodiscard]] QString ErrorTextOf(const std::function<void()>& work);

}  // namespace trevane::test
