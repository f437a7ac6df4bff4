// The settings file under hostile conditions: damaged files, temporaries of killed writers,
// links planted in place of the temporary settings file, permissions, and files that can't be
// written.
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSettings>
#include <QString>
#include <QSysInfo>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;
using cfgq_test::EnvGuard;
using cfgq_test::read_bytes;
using cfgq_test::write_file;

QByteArray test_data(const char* name) {
  return read_bytes(QStringLiteral(CFGQ_TEST_DATA_DIR "/") + QString::fromUtf8(name));
}

mode_t mode_of(const QString& path) {
  struct stat st {};
  if (::lstat(QFile::encodeName(path).constData(), &st) != 0) return 0;
  return st.st_mode;
}

void set_modified(const QString& path, const QDateTime& when) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  ASSERT_TRUE(file.setFileTime(when, QFileDevice::FileModificationTime));
}

class DamagedFileTest : public cfgq_test::SettingsTest {
 protected:
  QString copy_path() const { return profile_file() + QStringLiteral(".format-error"); }
};

TEST_F(DamagedFileTest, KeepsByteExactCopyBeforeTheFirstWrite) {
  // Hand-written files that Qt reads only in part; each keeps "Show_tips" before the damage.
  for (const char* name : {"damaged_unterminated_section.kreg", "damaged_line_without_equals.kreg",
                           "damaged_binary_line.kreg"}) {
    SCOPED_TRACE(name);
    QFile::remove(copy_path());
    const QByteArray damaged = test_data(name);
    ASSERT_FALSE(damaged.isEmpty());
    write_profile_file(damaged);
    {
      Key view(Key::GENERAL, "25.1", nullptr);
      // The file stays in place and is used as far as Qt could read it.
      QVariant tips;
      EXPECT_TRUE(view.get_value("Show_tips", &tips));
      EXPECT_EQ(tips.toString(), "Yes");
      EXPECT_EQ(read_bytes(copy_path()), damaged);
      view.set_value("Written_after", 1);
    }
    // The write replaced the damaged file; the copy still holds every byte of it.
    EXPECT_NE(read_bytes(profile_file()), damaged);
    EXPECT_EQ(read_bytes(copy_path()), damaged);
    EXPECT_EQ(mode_of(copy_path()) & 0077, 0u) << "the copy holds the user's settings";
  }
}

// A clean file gets no copy; views on a repaired file leave the copy alone, and a newer damaged
// file's copy replaces the older one.
TEST_F(DamagedFileTest, CopyFollowsOnlyTheLatestDamagedFile) {
  const QByteArray first = test_data("damaged_line_without_equals.kreg");
  const QByteArray second = test_data("damaged_unterminated_section.kreg");
  const struct {
    const char* what;
    QByteArray file;  // written before the view, or left as the last view wrote it
    QByteArray copy;  // expected afterwards; empty: no copy
  } steps[] = {
      {"clean file", "[25.1_pro]\nGeneral\\Show_tips=Yes\n", ""},
      {"first damaged file", first, first},
      {"repaired file", {}, first},
      {"second damaged file", second, second},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(step.what);
    if (!step.file.isEmpty()) write_profile_file(step.file);
    {
      Key view(Key::GENERAL, "25.1", nullptr);
      view.set_value("Step", step.what);
    }
    EXPECT_EQ(read_bytes(copy_path()), step.copy);
    EXPECT_EQ(QFile::exists(copy_path()), !step.copy.isEmpty());
  }
}

TEST_F(DamagedFileTest, CopyReplacesLinkPlantedAtItsNameWithoutWritingThrough) {
  const QString victim = QDir(home()).absoluteFilePath("victim.txt");
  write_file(victim, "precious\n");
  ASSERT_EQ(
      ::symlink(QFile::encodeName(victim).constData(), QFile::encodeName(copy_path()).constData()),
      0);
  write_profile_file(test_data("damaged_line_without_equals.kreg"));
  { const Key view(Key::GENERAL, "25.1", nullptr); }
  EXPECT_EQ(read_bytes(victim), "precious\n");
  EXPECT_TRUE(S_ISREG(mode_of(copy_path())));
}

class TemporarySettingsFileTest : public cfgq_test::SettingsTest {
 protected:
  TemporarySettingsFileTest() : m_regtest("KORVEL_REGTEST", "1") {}

  QString temporary_file() const {
    const Key view(Key::NO_MAIN_KEY, nullptr, nullptr);
    return view.fileName();
  }

 private:
  EnvGuard m_regtest;
};

TEST_F(TemporarySettingsFileTest, StaysReadableByOwnerOnlyAcrossWrites) {
  const QString path = temporary_file();
  ASSERT_TRUE(path.startsWith(QDir::tempPath())) << path.toStdString();
  for (int round = 0; round < 3; ++round) {
    SCOPED_TRACE(round);
    if (round == 2) QFile::remove(path);  // gone between views: made again the same way
    {
      Key view(Key::GENERAL, "25.1", nullptr);
      view.set_value("Round", round);
    }
    EXPECT_EQ(mode_of(path) & 07777, 0600u);
  }
  const Key view(Key::GENERAL, "25.1", nullptr);
  EXPECT_EQ(view.value("Round").toInt(), 2);
}

TEST_F(TemporarySettingsFileTest, NeverOpensThroughPlantedLinkOrPipe) {
  const QString path = temporary_file();
  const QString victim = QDir(home()).absoluteFilePath("victim.kreg");
  const QByteArray victim_bytes = "[25.1_pro]\nGeneral\\Secret=from the victim\n";
  write_file(victim, victim_bytes);
  for (const char* planted : {"symlink", "hardlink", "pipe"}) {
    SCOPED_TRACE(planted);
    QFile::remove(path);
    const QByteArray native = QFile::encodeName(path);
    const QByteArray target = QFile::encodeName(victim);
    const std::string kind = planted;
    int made = -1;
    if (kind == "symlink") made = ::symlink(target.constData(), native.constData());
    if (kind == "hardlink") made = ::link(target.constData(), native.constData());
    if (kind == "pipe") made = ::mkfifo(native.constData(), 0600);
    ASSERT_EQ(made, 0);
    {
      Key view(Key::GENERAL, "25.1", nullptr);
      EXPECT_FALSE(view.contains("Secret"));
      view.set_value("Mine", 1);
    }
    EXPECT_EQ(read_bytes(victim), victim_bytes);
    EXPECT_TRUE(S_ISREG(mode_of(path)));
    EXPECT_EQ(mode_of(path) & 07777, 0600u);
  }
}

}  // namespace

namespace {

// Qt tells that another process rewrote the file only by its size and modification time, in
// milliseconds. Where the file system's clock ticks coarsely (every few milliseconds on kernels
// before 6.13), two writes of the same size in one tick look alike.
class CoarseClockTest : public cfgq_test::SettingsTest {
 protected:
  // Another process's write: a new file renamed over the settings file, then given the time the
  // old file had, as a coarse clock would.
  void rewrite_in_the_same_tick(const QByteArray& bytes) {
    const QDateTime tick = QFileInfo(profile_file()).lastModified();
    const QString next = profile_file() + QStringLiteral(".next");
    write_file(next, bytes);
    ASSERT_EQ(::rename(QFile::encodeName(next).constData(),
                       QFile::encodeName(profile_file()).constData()),
              0);
    set_modified(profile_file(), tick);
  }
};

TEST_F(CoarseClockTest, SameSizeWriteInTheSameTickIsSeenAndKept) {
  write_profile_file("[25.1_pro]\nGeneral\\Step=00000001\n");
  {
    Key view(Key::GENERAL, "25.1", nullptr);
    EXPECT_EQ(view.value("Step").toString(), "00000001");
  }
  rewrite_in_the_same_tick("[25.1_pro]\nGeneral\\Step=00000002\n");
  {
    Key view(Key::GENERAL, "25.1", nullptr);
    EXPECT_EQ(view.value("Step").toString(), "00000002");
    view.set_value("Other", 1);
  }
  EXPECT_EQ(raw_value("25.1_pro/General/Step").toString(), "00000002");
}

TEST_F(CoarseClockTest, SameSizeWriteWhileAViewIsOpenIsKept) {
  write_profile_file("[25.1_pro]\nGeneral\\Step=00000001\n");
  {
    Key view(Key::GENERAL, "25.1", nullptr);
    EXPECT_EQ(view.value("Step").toString(), "00000001");
    rewrite_in_the_same_tick("[25.1_pro]\nGeneral\\Step=00000002\n");
    view.set_value("Other", 1);
  }
  EXPECT_EQ(raw_value("25.1_pro/General/Step").toString(), "00000002");
  EXPECT_EQ(raw_value("25.1_pro/General/Other").toInt(), 1);
}

}  // namespace
