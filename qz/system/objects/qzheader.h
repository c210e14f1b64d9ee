#pragma once

#include <string>

#include "qz/system/data/container.h"
#include "qz/system/frame/iterbase.h"

namespace QZSystem {

class QZInterface;

/// Where a file comes from: which program made it, how it was called and set, when, on which platform, and from which
/// earlier runs its input came.
///
///     const QZHeader header(argc, argv, "fold", "2.1", "", itf, &headerOfTheInput);
///     QZBWriteQZBase(out, header, "QZBasePOD", handler);
///
///     for (const QZHeader& run : QZIter(header.GetHistory())) qzout << run.GetCommandLine() << qzendl;
///
/// It is attached data and nothing else: "program", "version", "commandline", "comment", "itf", "qz_version",
/// "qz_release", "platform", "day", "month", "year", "hour", "minutes", "seconds"; "history", the number of earlier
/// runs, and these under "0", "1" and so on. So it goes where any `QZContainer` goes, and answers as one. The earlier
/// runs go into a stream only by a handler that knows the class: QZInstallGenericDataHandler<QZHeader>, with a reader
/// and a writer for the class itself.
///
/// A value that isn't there reads as "" or 0; so does one of another type, after the Warning of QZBase::GetData.
///
/// Const operations may run in parallel; a change needs exclusive access.
class QZHeader : public QZContainer {
 public:
  QZHeader() = default;
  QZHeader(const QZHeader&) = default;
  QZHeader(QZHeader&&) noexcept = default;
  QZHeader& operator=(const QZHeader&) = default;
  QZHeader& operator=(QZHeader&&) noexcept = default;
  ~QZHeader() override;

  /// The stamp of a run, at the present time: `argv[0]` is left out, the other arguments are joined by blanks as they
  /// are. With an `argc` of 0 there is the Warning "Warning: no command line arguments in QZHeader construction.".
  /// `previous`, the header of what the run works on, becomes the latest part of its history; null for none.
  /// REQUIRES: `program`, `version` and `comment` aren't null.
  QZHeader(int argc, char** argv, const char* program, const char* version, const char* comment, const QZInterface& itf,
           const QZHeader* previous);

  /// Whether it holds anything at all.
  operator bool() const;

  [[nodiscard]] std::string GetProgram() const;
  /// The arguments behind the program's name, with blanks between and no quotes.
  [[nodiscard]] std::string GetCommandLine() const;
  [[nodiscard]] std::string GetComment() const;
  /// The settings of the run, as a parameter file.
  [[nodiscard]] std::string GetInterface() const;
  [[nodiscard]] std::string GetQZRelease() const;
  [[nodiscard]] std::string GetVersion() const;
  [[nodiscard]] std::string GetPlatform() const;
  [[nodiscard]] int GetQZVersion() const;

  /// The date as it is stored: day and month count from 1. Of the time of day, stamps of this release count hours,
  /// minutes and seconds from 0; those of older files count each from 1.
  void GetDate(int& day, int& month, int& year) const;
  void GetDate(int& day, int& month, int& year, int& hour, int& minutes, int& seconds) const;

  /// A new iterator over copies of the earlier runs, the latest first; the caller deletes it. Runs that "history"
  /// counts and that aren't there are empty headers; more than 1024 of those aren't believed.
  [[nodiscard]] QZIterBase<QZHeader>* GetHistory() const;

  void SetProgram(const std::string& program);
  void SetCommandLine(const std::string& commandLine);
  void SetComment(const std::string& comment);
  void SetQZRelease(const std::string& release);
  void SetVersion(const std::string& version);
  void SetPlatform(const std::string& platform);
  void SetQZVersion(int version);

  /// Keeps the text that QZWriteSettings writes of an interface, with what isn't set as comments.
  void SetInterface(const QZInterface& itf);

  void SetDate(int day, int month, int year, int hour, int minutes, int seconds);
  /// The same at midnight.
  void SetDate(int day, int month, int year);
  /// The present local time. Without one it sends the Warning "QZCurrentTime failed to return a usable time", and the
  /// date stays as it is.
  void SetDate();

  /// Adds a run and the runs before it behind those that are there: first the history of `header`, from the latest to
  /// the first, then a copy of `header` without it. `header` may be this one, or be attached to it. Cost: linear.
  void AddHistory(const QZHeader& header);
};

extern template class QZBaseDataT<QZHeader>;

}  // namespace QZSystem
