#pragma once

#include "engine/remote/NestedCall.h"

#include <QAbstractItemModel>
#include <QObject>

#include <memory>
#include <vector>

namespace trevane::test {

/// An engine call between begin and end of a change of a model is a failure of the test.
class ModelChanges final : public QObject {
 public:
  void Watch(const QAbstractItemModel& model) {
    const auto begin = [this] { changes_.push_back(std::make_unique<WithinCall>()); };
    const auto end = [this] {
      if (!changes_.empty()) {
        changes_.pop_back();
      }
    };
    connect(&model, &QAbstractItemModel::rowsAboutToBeInserted, this, begin);
    connect(&model, &QAbstractItemModel::rowsInserted, this, end);
    connect(&model, &QAbstractItemModel::rowsAboutToBeRemoved, this, begin);
    connect(&model, &QAbstractItemModel::rowsRemoved, this, end);
    connect(&model, &QAbstractItemModel::layoutAboutToBeChanged, this, begin);
    connect(&model, &QAbstractItemModel::layoutChanged, this, end);
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, begin);
    connect(&model, &QAbstractItemModel::modelReset, this, end);
  }

 private:
  std::vector<std::unique_ptr<WithinCall>> changes_;
};

}  // namespace trevane::test
