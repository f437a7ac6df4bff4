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
#include "cfgq_file_safety.h"
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

class StaleTemporaryTest : public cfgq_test::SettingsTest {
 protected:
  QString beside(const char* suffix) const { return profile_file() + QString::fromUtf8(suffix); }
};

TEST_F(StaleTemporaryTest, NamesOfKilledWritersTemporaries) {
  const struct {
    const char* name;
    bool mixed_case_only;  // removed on its name alone
    bool with_evidence;    // removed when a killed writer's lock shows it is that writer's
  } rows[] = {
      {"korvel2.kreg.AbCdEf", true, true},   {"korvel2.kreg.qWERTY", true, true},
      {"korvel2.kreg.backup", false, true},  {"korvel2.kreg.ABCDEF", false, true},
      {"korvel2.kreg.AbCdE", false, false},  {"korvel2.kreg.AbCdEfG", false, false},
      {"korvel2.kreg.AbC1Ef", false, false}, {"korvel2.kreg.lock", false, false},
      {"korvel2.kreg.large", false, false},  {"korvel2.kreg.corrupt", false, false},
      {"korvel2.kregXAbCdEf", false, false}, {"other.kreg.AbCdEf", false, false},
      {"korvel2.kreg.AbCdÉf", false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const QString name = QString::fromUtf8(row.name);
    EXPECT_EQ(cfgq_is_stale_temporary_name(name, "korvel2.kreg", false), row.mixed_case_only);
    EXPECT_EQ(cfgq_is_stale_temporary_name(name, "korvel2.kreg", true), row.with_evidence);
  }
}

TEST_F(StaleTemporaryTest, FirstViewRemovesKilledWritersTemporariesAndKeepsUsersCopies) {
  write_profile_file("[25.1_pro]\nGeneral\\Show_tips=Yes\n");
  write_file(beside(".QxTrWm"), "[25.1_pro]\nGeneral\\Sho");
  write_file(beside(".backup"), "a copy the user made\n");
  { const Key view(Key::GENERAL, "25.1", nullptr); }
  EXPECT_FALSE(QFile::exists(beside(".QxTrWm")));
  EXPECT_TRUE(QFile::exists(beside(".backup")));
  EXPECT_EQ(raw_value("25.1_pro/General/Show_tips").toString(), "Yes");
}

TEST_F(StaleTemporaryTest, KilledWritersLockVouchesForTemporaryOfOneCase) {
  // A copy the user made, then the lock of a writer that died (no process has its id), then
  // that writer's temporary.
  const QDateTime now = QDateTime::currentDateTime();
  write_file(beside(".backup"), "made before the writer died\n");
  set_modified(beside(".backup"), now.addSecs(-120));
  write_file(beside(".lock"),
             "2147483646\nsettings_writer\n" + QSysInfo::machineHostName().toUtf8() + "\n");
  set_modified(beside(".lock"), now.addSecs(-60));
  write_file(beside(".abcdef"), "[25.1_pro]\n");
  { const Key view(Key::GENERAL, "25.1", nullptr); }
  EXPECT_FALSE(QFile::exists(beside(".abcdef")));
  EXPECT_FALSE(QFile::exists(beside(".lock")));
  EXPECT_TRUE(QFile::exists(beside(".backup")));
}

TEST_F(StaleTemporaryTest, EmptyLockOfWriterKilledAtItsCreationGoesOnceASecondOld) {
  // Qt would take it for a live writer's until it is 30 s old and stall every write till then.
  write_file(beside(".lock"), "");
  { const Key view(Key::GENERAL, "25.1", nullptr); }
  EXPECT_TRUE(QFile::exists(beside(".lock"))) << "a live writer may not have filled it yet";
  set_modified(beside(".lock"), QDateTime::currentDateTime().addSecs(-2));
  {
    Key view(Key::GENERAL, "25.1", nullptr);
    view.set_value("After_the_kill", 1);
  }
  EXPECT_FALSE(QFile::exists(beside(".lock")));
  EXPECT_EQ(raw_value("25.1_pro/General/After_the_kill").toInt(), 1);
}

TEST_F(StaleTemporaryTest, LiveWritersTemporaryStaysUntilItsLockIsGiven) {
  write_file(beside(".QxTrWm"), "[25.1_pro]\n");
  {
    // A writer that holds the lock may still rename its temporary into place.
    QLockFile writer(beside(".lock"));
    ASSERT_TRUE(writer.tryLock(0));
    { const Key view(Key::GENERAL, "25.1", nullptr); }
    EXPECT_TRUE(QFile::exists(beside(".QxTrWm")));
  }
  { const Key view(Key::GENERAL, "25.1", nullptr); }
  EXPECT_FALSE(QFile::exists(beside(".QxTrWm")));
}

// Isolated runs: the process's temporary settings file in TMPDIR.
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

class PermissionsTest : public cfgq_test::SettingsTest {};

TEST_F(PermissionsTest, ProfileFileKeepsTheModeTheUserGaveIt) {
  for (const mode_t mode : {0600, 0640, 0644, 0660}) {
    SCOPED_TRACE(mode);
    write_profile_file("[25.1_pro]\nGeneral\\Show_tips=Yes\n");
    ASSERT_EQ(::chmod(QFile::encodeName(profile_file()).constData(), mode), 0);
    {
      Key view(Key::GENERAL, "25.1", nullptr);
      view.set_value("Mode", static_cast<int>(mode));
    }
    EXPECT_EQ(mode_of(profile_file()) & 07777, mode);
    EXPECT_EQ(raw_value("25.1_pro/General/Mode").toInt(), static_cast<int>(mode));
  }
}

TEST_F(PermissionsTest, UnwritableSettingsPathLeavesProcessRunningAndFileIntact) {
  // Each case bites as root too: a path below a regular file, or a directory at the path.
  const QString file_home = QDir(home()).absoluteFilePath("not_a_directory");
  const QByteArray file_home_bytes = "a regular file where HOME should be a directory\n";
  write_file(file_home, file_home_bytes);
  {
    EnvGuard home_guard("HOME", file_home.toStdString());
    Key view(Key::GENERAL, "25.1", nullptr);
    view.set_value("Lost", 1);
    QVariant value;
    EXPECT_TRUE(view.get_value("Lost", &value));  // kept in memory while the view lives
  }
  EXPECT_EQ(read_bytes(file_home), file_home_bytes);

  ASSERT_TRUE(QDir(home()).mkdir("korvel2.kreg"));
  {
    Key view(Key::GENERAL, "25.1", nullptr);
    view.set_value("Lost", 1);
  }
  EXPECT_TRUE(QFileInfo(profile_file()).isDir());
}

TEST_F(PermissionsTest, ReadOnlyFileOrDirectoryKeepsItsContents) {
  if (::geteuid() == 0) GTEST_SKIP() << "root writes read-only files and directories";
  const QByteArray original = "[25.1_pro]\nGeneral\\Show_tips=Yes\n";
  for (const bool read_only_directory : {false, true}) {
    SCOPED_TRACE(read_only_directory);
    write_profile_file(original);
    const QByteArray target = QFile::encodeName(read_only_directory ? home() : profile_file());
    ASSERT_EQ(::chmod(target.constData(), read_only_directory ? 0500 : 0400), 0);
    {
      Key view(Key::GENERAL, "25.1", nullptr);
      view.set_value("Show_tips", "No");
    }
    EXPECT_EQ(read_bytes(profile_file()), original);
    ::chmod(target.constData(), read_only_directory ? 0700 : 0600);
  }
}

class HostileFileTest : public cfgq_test::SettingsTest {};

// Copying a group that listed a subgroup with an empty name entered the same group again
// without end, until the stack overflowed (found by the fuzz target).
TEST_F(HostileFileTest, CopyEndsOnKeyWithEmptyGroupLevel) {
  write_profile_file(test_data("empty_group_level.kreg"));
  Key root(Key::NO_MAIN_KEY, nullptr, nullptr);
  EXPECT_EQ(root.copy("25.1_pro", "26.1_pro"), 1);
  EXPECT_EQ(root.value("26.1_pro/General/Show_tips").toString(), "Yes");
  Key general(root, "25.1_pro/General");
  general.clear_registry_key();
  EXPECT_FALSE(general.contains("Show_tips"));
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
