#pragma once

#include "engine/files/ProviderError.h"
#include "engine/model/ItemObserver.h"

#include <QString>

#include <algorithm>
#include <concepts>
#include <utility>
#include <vector>

namespace trevane {

/// The primitives that RemoveTree needs: a current folder, which is held while it is worked in, and its
/// items. No link is followed.
template <class Tree>
concept RemovableTree = requires(Tree& tree, const typename Tree::Item& item) {
  /// The items of the current folder.
  { tree.List() } -> std::same_as<std::vector<typename Tree::Item>>;
  /// Mount points are folders, links to folders are not.
  { Tree::IsFolder(item) } -> std::same_as<bool>;
  { Tree::NameOf(item) } -> std::convertible_to<QString>;
  /// Makes a folder current. Returns false when it has vanished; fails with providererror::kChanged when it
  /// is no longer a folder.
  { tree.Enter(item) } -> std::same_as<bool>;
  /// Back to the folder above.
  {tree.Leave()};
  { tree.IsMountPoint() } -> std::same_as<bool>;
  /// Deletes a file, a link or an empty folder. An item that has vanished is no failure.
  {tree.Remove(item)};
  /// The path of the current folder, and of an item in it.
  { tree.Text() } -> std::convertible_to<QString>;
  { tree.TextOf(item) } -> std::convertible_to<QString>;
};

/// Deletes `top`, an item of the current folder, with everything below it. Refuses mount points
/// (providererror::kBusy) and leaves their contents alone. Items that vanish meanwhile are no failure. The
/// observer is called with each item within a folder. After a failure the current folder is the one where it
/// happened.
template <RemovableTree Tree>
void RemoveTree(Tree& tree, typename Tree::Item top, const ItemObserver& observer) {
  using Item = typename Tree::Item;
  struct Level {
    Item folder;
    std::vector<Item> folders;
    /// As ItemProgress names it; empty without an observer.
    QString shownPath;
  };
  std::vector<Level> levels;
  qint64 files = 0;
  qint64 filesKnown = 0;
  const auto reportProgress = [&](const Item& item) {
    if (observer && !observer({.name = Tree::NameOf(item),
                               .folder = levels.back().shownPath,
                               .files = files,
                               .filesKnown = filesKnown})) {
      Fail(error::kCancelled, tree.TextOf(item));
    }
  };
  const auto enter = [&](Item folder) {
    try {
      if (!tree.Enter(folder)) {
        return;
      }
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kAccessDenied) {
        throw;
      }
      // An empty folder can be deleted even if it may not be read.
      try {
        tree.Remove(folder);
      } catch (const RunTimeError&) {
        throw failure;
      }
      return;
    }
    if (tree.IsMountPoint()) {
      Fail(providererror::kBusy, QStringLiteral("A drive is mounted here"), tree.Text());
    }
    QString shownPath;
    if (observer) {
      const QString own = Tree::NameOf(folder);
      shownPath = levels.empty() ? own : levels.back().shownPath + u'\\' + own;
    }
    Level& level = levels.emplace_back(Level{std::move(folder), {}, std::move(shownPath)});
    std::vector<Item> items = tree.List();
    filesKnown +=
        std::count_if(items.begin(), items.end(), [](const Item& item) { return !Tree::IsFolder(item); });
    for (Item& item : items) {
      if (Tree::IsFolder(item)) {
        level.folders.push_back(std::move(item));
        continue;
      }
      reportProgress(item);
      tree.Remove(item);
      ++files;
    }
  };
  if (!Tree::IsFolder(top)) {
    tree.Remove(top);
    return;
  }
  enter(std::move(top));
  while (!levels.empty()) {
    if (levels.back().folders.empty()) {
      const Item done = std::move(levels.back().folder);
      levels.pop_back();
      tree.Leave();
      tree.Remove(done);
      continue;
    }
    Item next = std::move(levels.back().folders.back());
    levels.back().folders.pop_back();
    reportProgress(next);
    enter(std::move(next));
  }
}

}  // namespace trevane
