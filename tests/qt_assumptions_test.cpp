// What the library takes for granted about how Qt reads, stamps and writes an INI file, one test
// per assumption, so that a Qt upgrade that changes one fails here, under its name:
//  - a settings object reads the file again only when its size or modification time changed
//    (so a writer must make a change show in them: see touch_distinct);
//  - Qt commits a file cut short in the last buffer it writes, and reports no error (so the
//    library counts what was written before it replaces the file);
//  - objects on one path share one parsed state, pending changes included (so a second object
//    can write what the first holds, as the event-loop flush does);
//  - a write through a link replaces the link's target and keeps the link (so an alias can
//    point Qt's write at a staged file).
#include <cstdio>

#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include "test_support.h"

namespace {

using cfgq_test::read_bytes;
using cfgq_test::write_file;

class QtAssumption : public ::testing::Test {
 protected:
  QString path(const QString& name) const { return m_dir.filePath(name); }
  QTemporaryDir m_dir;
};

TEST_F(QtAssumption, FileIsReadAgainOnlyWhenItsSizeOrModificationTimeChanged) {
  const struct {
    const char* rewrite;
    const char* content;
    long long mtime_shift_s;
    const char* seen;
  } rows[] = {
      {"new inode, same size and time", "[g]\nk=2\n", 0, "1"},
      {"new inode, time moved", "[g]\nk=2\n", 2, "2"},
      {"new inode, other size", "[g]\nk=22\n", 0, "22"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rewrite);
    const QString file = path(QStringLiteral("stamp.ini"));
    QFile::remove(file);
    write_file(file, "[g]\nk=1\n");
    struct stat old {};
    ASSERT_EQ(::stat(QFile::encodeName(file).constData(), &old), 0);
    const QSettings first(file, QSettings::IniFormat);  // keeps Qt's parsed state alive
    ASSERT_EQ(first.value("g/k").toString(), "1");
    write_file(file + ".new", row.content);
    ASSERT_EQ(std::rename(QFile::encodeName(file + ".new").constData(),
                          QFile::encodeName(file).constData()),
              0);
    struct timespec times[2] = {old.st_atim, old.st_mtim};
    times[1].tv_sec += row.mtime_shift_s;
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
    const QSettings second(file, QSettings::IniFormat);
    EXPECT_EQ(second.value("g/k").toString(), row.seen);
  }
}

TEST_F(QtAssumption, FileCutShortInTheLastBufferIsCommittedWithoutAnError) {
  // 1,000 values make a file of 95,900 bytes; Qt writes it in buffers of 16 KiB.
  const struct {
    const char* mode;
    int offset;
    int status;       // QSettings::status() of the writer
    qint64 size;      // of the file left, -1 for none
  } rows[] = {
      {"short", 100, QSettings::AccessError, -1},    // found: no file made
      {"enospc", 16'384, QSettings::AccessError, -1},
      {"short", 95'000, QSettings::NoError, 95'000},  // the last buffer: committed cut short
      {"enospc", 95'000, QSettings::NoError, 81'515},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.mode) + " at " + std::to_string(row.offset));
    const QString file = path(QStringLiteral("cut.ini"));
    QFile::remove(file);
    QProcess writer;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(CFGQ_WRITE_FAULT));
    env.insert(QStringLiteral("WRITE_FAULT_DIR"), m_dir.path());
    env.insert(QStringLiteral("WRITE_FAULT_OFFSET"), QString::number(row.offset));
    env.insert(QStringLiteral("WRITE_FAULT_MODE"), QString::fromLatin1(row.mode));
    env.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("verify_asan_link_order=0"));
    writer.setProcessEnvironment(env);
    writer.start(QStringLiteral(CFGQ_SETTINGS_WRITER),
                 {QStringLiteral("raw"), file, QStringLiteral("1000")});
    ASSERT_TRUE(writer.waitForFinished(60'000));
    EXPECT_EQ(writer.exitCode(), row.status);
    EXPECT_EQ(QFileInfo::exists(file) ? QFileInfo(file).size() : -1, row.size);
  }
}

TEST_F(QtAssumption, ObjectsOnOnePathSharePendingChanges) {
  const QString file = path(QStringLiteral("shared.ini"));
  QSettings first(file, QSettings::IniFormat);
  first.setValue("g/pending", "yes");
  {
    QSettings second(file, QSettings::IniFormat);
    EXPECT_EQ(second.value("g/pending").toString(), "yes");
    second.sync();  // writes what the first holds
  }
  EXPECT_TRUE(read_bytes(file).contains("pending=yes"));
}

TEST_F(QtAssumption, WriteThroughALinkReplacesTheTargetAndKeepsTheLink) {
  ASSERT_TRUE(QDir(m_dir.path()).mkpath(QStringLiteral("stage")));
  const QString target = path(QStringLiteral("stage/file.ini"));
  const QString link = path(QStringLiteral("alias"));
  write_file(target, "[g]\nk=1\n");
  ASSERT_TRUE(QFile::link(target, link));
  {
    QSettings settings(link, QSettings::IniFormat);
    settings.setValue("g/k", "2");
  }
  EXPECT_TRUE(QFileInfo(link).isSymLink());
  EXPECT_EQ(QFileInfo(link).symLinkTarget(), target);
  EXPECT_EQ(read_bytes(target), "[g]\nk=2\n");
  EXPECT_EQ(QDir(path(QStringLiteral("stage"))).entryList(QDir::Files), QStringList{"file.ini"});
}

}  // namespace
