#include "views/addresses/DriveSpaces.h"

#include <QHash>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace trevane {

struct DriveSpaces::Answers {
  struct Answer {
    std::optional<VolumeSpace> space;
    bool asking = false;
    quint64 round = 0;
  };

  std::mutex mutex;
  std::condition_variable changed;
  /// By the place of the drive: another volume under the same letter is another one.
  QHash<QString, Answer> byPlace;
};

DriveSpaces::DriveSpaces() : answers_(std::make_shared<Answers>()) {}
DriveSpaces::~DriveSpaces() = default;

std::optional<VolumeSpace> DriveSpaces::SpaceOf(const Volumes& volumes, const Volume& volume) {
  Volumes::SpaceQuery query = volumes.QueryOfSpace(volume);
  if (volume.driveType == drivetype::kFixed || volume.driveType == drivetype::kRamDisk) {
    return query();
  }
  const QString place =
      volume.name + u'|' + volume.rootPath + u'|' + QString::number(volume.device, 16) + u'|' + volume.share;
  std::unique_lock lock(answers_->mutex);
  if (!answers_->byPlace[place].asking) {
    try {
      std::thread([answers = answers_, place, query = std::move(query)] {
        std::optional<VolumeSpace> space;
        try {
          space = query();
        } catch (const std::exception&) {
          // As a drive that does not tell.
        }
        const std::lock_guard told(answers->mutex);
        Answers::Answer& answer = answers->byPlace[place];
        answer.space = space;
        answer.asking = false;
        ++answer.round;
        answers->changed.notify_all();
      }).detach();
    } catch (const std::exception&) {
      return answers_->byPlace[place].space;
    }
    answers_->byPlace[place].asking = true;
    const quint64 round = answers_->byPlace[place].round;
    answers_->changed.wait_for(lock, std::chrono::milliseconds(kPatience),
                               [&] { return answers_->byPlace[place].round != round; });
  }
  return answers_->byPlace[place].space;
}

}  // namespace trevane
