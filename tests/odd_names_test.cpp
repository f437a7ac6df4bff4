// Odd key names, section names and values, written by one view and read back through a new view
// once the writer is gone and the file has been read again from disk.
#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <gtest/gtest.h>

#include "cfgq.h"
#include "test_support.h"

namespace {

using Key = CFGQ_REGISTRY_KEY;

class OddNamesTest : public cfgq_test::SettingsTest {
 protected:
  // Qt answers from what it parsed while the file keeps its size and modification time; a new
  // modification time makes the next view read the file from disk.
  void make_next_view_read_the_disk() {
    QFile file(profile_file());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(-m_rereads++ - 10),
                                 QFileDevice::FileModificationTime));
  }

  QVariant write_and_read_back(const char* section, const QString& name, const QVariant& value) {
    {
      Key writer(section, "25.1", nullptr);
      writer.set_value(name, value);
    }
    make_next_view_read_the_disk();
    Key reader(section, "25.1", nullptr);
    QVariant read;
    EXPECT_TRUE(reader.get_value(name, &read));
    EXPECT_TRUE(reader.childKeys().contains(name));
    return read;
  }

 private:
  int m_rereads = 0;
};

const char* const odd_names[] = {
    "with blank",    " leading and trailing ",
    "equals=sign",   "semi;colon",
    "hash#mark",     "back\\slash",
    "double\"quote", "single'quote",
    "[brackets]",    "percent%20sign",
    "tab\there",     "Ümläut_ß",
    "日本語",        "emoji_😀",
    "@at_sign",
};

TEST_F(OddNamesTest, KeyAndSectionNamesComeBackUnchanged) {
  // A "/" is not among them: it separates groups, so such a name reaches into a subgroup.
  for (const char* odd : odd_names) {
    SCOPED_TRACE(odd);
    const QString name = QString::fromUtf8(odd);
    EXPECT_EQ(write_and_read_back("General", name, name + " value").toString(), name + " value");
    EXPECT_EQ(write_and_read_back(odd, QStringLiteral("Key"), name).toString(), name);
    const Key main_key(Key::NO_SUB_KEY, "25.1", nullptr);
    EXPECT_TRUE(main_key.childGroups().contains(name));
  }
}

TEST_F(OddNamesTest, TextsComeBackUnchanged) {
  const QString texts[] = {
      QStringLiteral("line one\nline two\n"),
      QStringLiteral("windows\r\nline end"),
      QString::fromUtf16(u"nul\0inside\0", 11),
      QStringLiteral("  blanks around  "),
      QStringLiteral("\"quoted\" and 'quoted'"),
      QStringLiteral("a, b, c"),
      QStringLiteral("semi;colon #hash \\back\\slash"),
      QStringLiteral("@ByteArray(not bytes)"),
      QStringLiteral("@Invalid()"),
      QStringLiteral("%U00FC stays as typed"),
      QString::fromUtf8("Ünïcödé 日本語 😀"),
      QString(),
      QString(100'000, QLatin1Char('x')),
  };
  int i = 0;
  for (const QString& text : texts) {
    SCOPED_TRACE(i);
    const QVariant read = write_and_read_back("General", QStringLiteral("Text_%1").arg(i++), text);
    EXPECT_EQ(read.toString(), text);
  }
}

TEST_F(OddNamesTest, BytesListsAndTypesTheTextFormatDoesNotKeep) {
  // Bytes and lists come back as written. The library stores values unconverted; the file keeps
  // numbers, truth values and lists of one item as their text. An empty list reads as no value.
  QByteArray every_byte;
  for (int b = 0; b < 256; ++b) every_byte.append(static_cast<char>(b));
  const QStringList lists[] = {{"a", "b"}, {"with, comma", "with \"quote\"", "with\nline"}, {"", ""}};
  const std::pair<QVariant, QVariant> rows[] = {
      {every_byte, every_byte},   {QByteArray(), QByteArray()},
      {lists[0], lists[0]},       {lists[1], lists[1]},
      {lists[2], lists[2]},       {42, QStringLiteral("42")},
      {-7, QStringLiteral("-7")}, {qint64{1} << 40, QStringLiteral("1099511627776")},
      {true, QStringLiteral("true")}, {1.5, QStringLiteral("1.5")},
      {QStringList{"only"}, QStringLiteral("only")}, {QStringList(), QVariant()},
  };
  int i = 0;
  for (const auto& [written, read] : rows) {
    SCOPED_TRACE(i);
    EXPECT_EQ(write_and_read_back("General", QStringLiteral("Typed_%1").arg(i++), written), read);
  }
}

TEST_F(OddNamesTest, LongTextsUpToTheLimit) {
  // 9,999,999 UTF-16 code units are stored; the file then holds more than 10,000,000 bytes, so
  // the next view sets it aside as ".large" and starts empty. 10,000,000 units are not stored.
  const QString longest(9'999'999, QLatin1Char('l'));
  {
    Key writer(Key::GENERAL, "25.1", nullptr);
    writer.set_value("Longest", longest);
    writer.set_value("Too_long", QString(10'000'000, QLatin1Char('t')));
    QVariant read;
    EXPECT_TRUE(writer.get_value("Longest", &read));
    EXPECT_EQ(read.toString().size(), longest.size());
    EXPECT_FALSE(writer.contains("Too_long"));
  }
  EXPECT_GT(QFile(profile_file()).size(), 10'000'000);
  {
    QSettings written(profile_file(), QSettings::IniFormat);
    EXPECT_EQ(written.value("25.1_pro/General/Longest").toString(), longest);
  }
  const Key reader(Key::GENERAL, "25.1", nullptr);
  EXPECT_FALSE(reader.contains("Longest"));
  EXPECT_TRUE(QFile::exists(profile_file() + ".large"));
}

}  // namespace
