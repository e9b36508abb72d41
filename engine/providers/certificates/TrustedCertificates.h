#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QDate>
#include <QString>
#include <QtGlobal>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

class AcceptedCertificates;
struct ShownCertificate;
struct TrustPlace;

/// What the files of trusted certificates hold of one host, as they are now. A line is "host:port", the
/// fingerprint, the day and the subject, separated by blanks; one that begins with "#" is a comment.
class TrustedCertificates final {
 public:
  /// Where a line stands.
  struct Line {
    /// Empty for one that was accepted in this run and could not be stored.
    QString file = {};
    int number = 0;
  };
  enum class Verdict { Known, Unknown, Changed };
  struct Judgement {
    Verdict verdict = Verdict::Unknown;
    /// Of a changed certificate the trusted one, and where it stands.
    QByteArray oldFingerprint = {};
    Line line = {};
  };

  /// Files that are missing hold nothing. Fails with error::kAccessDenied, the file and the reason where one
  /// that is there cannot be read, or where a line of this host cannot: a changed certificate would look
  /// unknown.
  TrustedCertificates(const TrustPlace& place, const QString& host, quint16 port);
  TrustedCertificates(const TrustedCertificates&) = delete;
  TrustedCertificates& operator=(const TrustedCertificates&) = delete;

  /// Those that are trusted, the last one first.
  [[nodiscard]] QByteArrayList Fingerprints() const;
  [[nodiscard]] Judgement Judge(const QByteArray& fingerprint) const;
  /// Adds a line to the user's file. Nothing, or why it could not be stored: it is trusted until the program
  /// ends then. Another program may have added lines meanwhile: fails as the constructor does, and adds
  /// nothing where another certificate of this host is trusted by now, which `Judge` tells then.
  [[nodiscard]] std::optional<QString> Add(const ShownCertificate& shown, const QDate& day);

 private:
  struct Entry {
    QByteArray fingerprint;
    Line line;
  };

  void Read(const QString& file);
  /// The user's file, in place of what was read of it.
  void ReadAnew(const QByteArray& bytes);
  void ReadLines(const QByteArray& bytes, const QString& file);
  void ReadLine(const QByteArray& text, const Line& line);
  [[nodiscard]] std::optional<QString> Store(const ShownCertificate& shown, const QDate& day);

  /// As they stand in the files: "cell4" and "cell4:990".
  const QByteArray host_;
  const QByteArray name_;
  const QString usersFile_;
  const std::shared_ptr<AcceptedCertificates> accepted_;
  std::vector<Entry> entries_;
};

}  // namespace trevane
