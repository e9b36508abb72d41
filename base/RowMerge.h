#pragma once

#include <QtGlobal>

#include <cstddef>
#include <vector>

namespace trevane {

/// New entries that enter the rows next to each other.
struct RowRun {
  /// Position among the new entries.
  size_t first = 0;
  size_t count = 0;
  /// Number of old rows before the run.
  size_t row = 0;
};

/// Where `added` entries, in order themselves, enter `rows` rows that are in order: `before(a, r)` is true
/// when the new entry `a` is before the old row `r`. A new entry comes after the old rows that it equals. The
/// search gallops on from the last position, so that both few entries among many rows and equally many of
/// both stay cheap.
template <typename Before>
[[nodiscard]] std::vector<RowRun> MergeRuns(size_t rows, size_t added, Before before) {
  std::vector<RowRun> runs;
  size_t position = 0;
  for (size_t a = 0; a < added; ++a) {
    size_t low = position;
    size_t high = position;
    size_t step = 1;
    while (high < rows && !before(a, high)) {
      low = high + 1;
      high += step;
      step *= 2;
    }
    high = high < rows ? high : rows;
    while (low < high) {
      const size_t middle = low + (high - low) / 2;
      if (before(a, middle)) {
        high = middle;
      } else {
        low = middle + 1;
      }
    }
    position = low;
    if (!runs.empty() && runs.back().row == position) {
      ++runs.back().count;
    } else {
      runs.push_back({a, 1, position});
    }
  }
  return runs;
}

/// Up to so many runs are put into a model run by run, which leaves the layout of a collapsed branch alone;
/// more are appended at once and put in order by a change of layout.
inline constexpr size_t kMostSingleRuns = 32;

/// `rows` with the new entries in their places.
template <typename T>
[[nodiscard]] std::vector<T> MergedRows(const std::vector<T>& rows, const std::vector<T>& added,
                                        const std::vector<RowRun>& runs) {
  std::vector<T> merged;
  merged.reserve(rows.size() + added.size());
  size_t taken = 0;
  for (const RowRun& run : runs) {
    merged.insert(merged.end(), rows.begin() + static_cast<std::ptrdiff_t>(taken),
                  rows.begin() + static_cast<std::ptrdiff_t>(run.row));
    taken = run.row;
    const auto first = added.begin() + static_cast<std::ptrdiff_t>(run.first);
    merged.insert(merged.end(), first, first + static_cast<std::ptrdiff_t>(run.count));
  }
  merged.insert(merged.end(), rows.begin() + static_cast<std::ptrdiff_t>(taken), rows.end());
  return merged;
}

}  // namespace trevane
