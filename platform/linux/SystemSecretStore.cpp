#include "base/RunTimeError.h"
#include "platform/MakeSecretStore.h"
#include "platform/linux/GlibSessionBus.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/StoreCondition.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>
#include <qt6keychain/keychain.h>

#include <atomic>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

namespace trevane {

namespace {

const QString kService = QStringLiteral("Trevane");
constexpr int kTick = 10;  // milliseconds

SecretStore::Condition NoAnswer() {
  return {.isReady = false, .whyNot = QStringLiteral("The password store does not answer.")};
}

/// The bytes are the ones that the copies of `bytes` share.
void Wipe(const QByteArray& bytes) {
  WipeBytes(const_cast<char*>(bytes.constData()), std::size_t(bytes.size()));
}

class SystemSecretStore final : public SecretStore {
 public:
  explicit SystemSecretStore(std::function<bool()> isCancelled) : isCancelled_(std::move(isCancelled)) {}

  [[nodiscard]] Condition Look() override;
  [[nodiscard]] std::optional<Secret> Find(const QString& account) override;
  void Keep(const QString& account, const Secret& secret) override;
  void Forget(const QString& account) override;

 private:
  /// Lets events run until `isDone`. False when it has taken too long, or was cancelled.
  [[nodiscard]] bool WaitUntil(const std::function<bool()>& isDone) const;
  /// False when the job did not come to its end in time; it is left behind then, and ends by itself.
  [[nodiscard]] bool Run(std::unique_ptr<QKeychain::Job>& job, const QString& account);

  const std::function<bool()> isCancelled_;
  /// The library runs one job after the other: behind this one none comes to its turn.
  QPointer<QKeychain::Job> leftBehind_;
  /// Of the last look at a store that was ready: the library uses the same connection.
  std::unique_ptr<GlibSessionBus> bus_;
};

bool SystemSecretStore::WaitUntil(const std::function<bool()>& isDone) const {
  QElapsedTimer clock;
  clock.start();
  QTimer tick;
  tick.start(kTick);
  while (!isDone()) {
    if (clock.elapsed() >= kLongestSecretWait || (isCancelled_ && isCancelled_())) {
      return false;
    }
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

SecretStore::Condition SystemSecretStore::Look() {
  struct Answer {
    Condition condition;
    std::unique_ptr<GlibSessionBus> bus;
    std::atomic<bool> isThere = false;
  };
  if (leftBehind_ != nullptr) {
    return NoAnswer();
  }
  const auto answer = std::make_shared<Answer>();
  try {
    // Connecting to a bus blocks as long as that does not answer. The thread is left behind then.
    std::thread([answer, address = sessionbus::Address()] {
      answer->condition = AskStoreCondition(address);
      if (answer->condition.isReady) {
        answer->bus = std::make_unique<GlibSessionBus>();
      }
      answer->isThere = true;
    }).detach();
  } catch (const std::system_error&) {
    return NoAnswer();
  }
  if (!WaitUntil([&answer] { return answer->isThere.load(); })) {
    return NoAnswer();
  }
  if (answer->bus) {
    bus_ = std::move(answer->bus);
  }
  return answer->condition;
}

bool SystemSecretStore::Run(std::unique_ptr<QKeychain::Job>& job, const QString& account) {
  job->setAutoDelete(false);
  job->setInsecureFallback(false);
  job->setKey(account);
  bool isDone = false;
  const QMetaObject::Connection connection =
      QObject::connect(job.get(), &QKeychain::Job::finished, job.get(), [&isDone] { isDone = true; });
  job->start();
  if (WaitUntil([&isDone] { return isDone; })) {
    return true;
  }
  QObject::disconnect(connection);
  leftBehind_ = job.release();
  leftBehind_->setAutoDelete(true);
  return false;
}

std::optional<Secret> SystemSecretStore::Find(const QString& account) {
  // Reading would have the desktop ask for the password of a locked store.
  if (!Look().isReady) {
    return std::nullopt;
  }
  auto* const reading = new QKeychain::ReadPasswordJob(kService);
  std::unique_ptr<QKeychain::Job> job(reading);
  if (!Run(job, account) || reading->error() != QKeychain::NoError) {
    return std::nullopt;
  }
  const QByteArray bytes = reading->binaryData();
  Secret secret{QByteArrayView(bytes)};
  Wipe(bytes);
  return secret;
}

void SystemSecretStore::Keep(const QString& account, const Secret& secret) {
  const Condition condition = Look();
  if (!condition.isReady) {
    throw RunTimeError(error::kDeviceNotReady, condition.whyNot);
  }
  auto* const writing = new QKeychain::WritePasswordJob(kService);
  std::unique_ptr<QKeychain::Job> job(writing);
  const QByteArray bytes = secret.Bytes().toByteArray();
  writing->setBinaryData(bytes);
  const bool isDone = Run(job, account);
  if (!isDone) {
    throw RunTimeError(error::kTimeOut, NoAnswer().whyNot);
  }
  Wipe(bytes);
  if (writing->error() != QKeychain::NoError) {
    const QString text = writing->errorString();
    throw RunTimeError(error::kAccessDenied,
                       text.isEmpty() ? QStringLiteral("The password store refused the password") : text);
  }
}

void SystemSecretStore::Forget(const QString& account) {
  if (Look().isReady) {
    std::unique_ptr<QKeychain::Job> job = std::make_unique<QKeychain::DeletePasswordJob>(kService);
    static_cast<void>(Run(job, account));
  }
}

}  // namespace

std::unique_ptr<SecretStore> MakeSecretStore(std::function<bool()> isCancelled) {
  return std::make_unique<SystemSecretStore>(std::move(isCancelled));
}

}  // namespace trevane
