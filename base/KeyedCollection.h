#pragma once

#include "base/LowerCase.h"
#include "base/RunTimeError.h"

#include <QString>

#include <algorithm>
#include <vector>

namespace trevane {

/// An ordered collection whose items have keys, compared without regard to case. Positions count from 1.
/// Fails with error::kKeyAlreadyThere, error::kNoSuchKey and error::kOutOfRange, and a call that fails
/// changes nothing. Made for tens of items: a key is looked for from the beginning.
template <class T>
class KeyedCollection {
  struct Element {
    QString key;
    T item;
  };
  using Elements = std::vector<Element>;

 public:
  /// Walks the items in order; a change of the collection ends its validity.
  class Iterator {
   public:
    explicit Iterator(typename Elements::const_iterator at) : at_(at) {}
    const T& operator*() const { return at_->item; }
    const T* operator->() const { return &at_->item; }
    Iterator& operator++() {
      ++at_;
      return *this;
    }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    typename Elements::const_iterator at_;
  };

  /// Adds at the end.
  void Add(const QString& key, T item) { InsertAt(elements_.end(), key, std::move(item)); }

  /// Adds in front of the item that is at `position` now.
  void AddBefore(const QString& key, T item, qint32 position) {
    InsertAt(elements_.begin() + Offset(position), key, std::move(item));
  }

  [[nodiscard]] const T& Item(const QString& key) const { return Find(key)->item; }
  [[nodiscard]] const T& Item(qint32 position) const {
    return elements_[static_cast<size_t>(Offset(position))].item;
  }

  void Remove(const QString& key) { elements_.erase(Find(key)); }
  void Remove(qint32 position) { elements_.erase(elements_.begin() + Offset(position)); }

  [[nodiscard]] bool Contains(const QString& key) const { return Look(key) != elements_.end(); }
  [[nodiscard]] qint32 Count() const noexcept { return static_cast<qint32>(elements_.size()); }
  void Clear() noexcept { elements_.clear(); }

  [[nodiscard]] Iterator begin() const { return Iterator(elements_.begin()); }
  [[nodiscard]] Iterator end() const { return Iterator(elements_.end()); }

 private:
  void InsertAt(typename Elements::const_iterator before, const QString& key, T item) {
    if (Contains(key)) {
      throw RunTimeError(error::kKeyAlreadyThere,
                         QStringLiteral("This key is already associated with an element: '%1'").arg(key));
    }
    elements_.insert(before, Element{key, std::move(item)});
  }

  [[nodiscard]] typename Elements::const_iterator Look(const QString& key) const {
    return std::find_if(elements_.begin(), elements_.end(),
                        [&key](const Element& element) { return EqualIgnoringCase(element.key, key); });
  }

  [[nodiscard]] typename Elements::const_iterator Find(const QString& key) const {
    const auto found = Look(key);
    if (found == elements_.end()) {
      throw RunTimeError(error::kNoSuchKey, QStringLiteral("There is no element with the key '%1'").arg(key));
    }
    return found;
  }

  [[nodiscard]] qint32 Offset(qint32 position) const {
    if (position < 1 || position > Count()) {
      throw RunTimeError(error::kOutOfRange,
                         QStringLiteral("There is no element at the position %1").arg(position));
    }
    return position - 1;
  }

  Elements elements_;
};

}  // namespace trevane
