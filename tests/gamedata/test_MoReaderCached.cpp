// Message catalogues: real ones compiled by GNU msgfmt, and hand-made ones
// with broken offsets and odd hash tables.

#include "LogCapture.h"
#include "MoFile.h"
#include "MoReaderCached.h"
#include "Msgfmt.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TestRoot.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <utility>

namespace {
using Entries = CatalogueEntries;

// A catalogue laid out by hand: header, key table, translation table, hash
// table and strings, with the hash hashSlots given directly.
struct HandMadeCatalogue
{
    QStringList keys;
    QStringList translations;
    QList<quint32> hashSlots; // 0 = free, else entry number + 1
    bool bigEndian = false;

    QByteArray bytes() const
    {
        const quint32 count = quint32(keys.size());
        const quint32 keyTable = 28;
        const quint32 translationTable = keyTable + 8 * count;
        const quint32 hashTable = translationTable + 8 * count;
        const quint32 stringStart = hashTable + 4 * quint32(hashSlots.size());

        QByteArray out;
        for (const quint32 value : {MoFile::Magic, 0u, count, keyTable, translationTable,
                                    quint32(hashSlots.size()), hashTable})
            putWord(out, value);
        QByteArray strings;
        for (const QString& text : keys + translations) {
            const QByteArray utf8 = text.toUtf8();
            putWord(out, quint32(utf8.size()));
            putWord(out, stringStart + quint32(strings.size()));
            strings += utf8 + '\0';
        }
        for (const quint32 slot : hashSlots)
            putWord(out, slot);
        return out + strings;
    }

    void putWord(QByteArray& out, quint32 value) const
    {
        out.append(4, '\0');
        if (bigEndian)
            qToBigEndian(value, out.data() + out.size() - 4);
        else
            qToLittleEndian(value, out.data() + out.size() - 4);
    }
};

void setWord(QByteArray& bytes, int offset, quint32 value)
{
    qToLittleEndian(value, bytes.data() + offset);
}

quint32 wordAt(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

// Collects qDebug() lines while it lives.
class DebugCapture
{
public:
    DebugCapture()
    {
        lines().clear();
        previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&,
                                             const QString& message) { lines().append(message); });
    }
    ~DebugCapture() { qInstallMessageHandler(previous); }
    static QStringList& lines()
    {
        static QStringList captured;
        return captured;
    }

private:
    QtMessageHandler previous = nullptr;
};

Entries manyEntries(int count)
{
    Entries entries;
    for (int i = 0; i < count; ++i)
        entries.append({QString("vehicle_%1/name").arg(i), QString("Fahrzeug %1 ä").arg(i)});
    return entries;
}
} // namespace

TEST(MoFileTest, FindsEveryEntryOfMsgfmtCataloguesInBothByteOrders)
{
    // Keys and texts keep quotes, colons and UTF-8.
    const Entries entries = manyEntries(300) + Entries{{"it's \"quoted\"", "Ölfass – \"x\""},
                                                       {"nations/ardenia", "Ardenia"},
                                                       {"日本", "Japan"}};
    for (const QString endianness : {"little", "big"}) {
        SCOPED_TRACE(endianness.toStdString());
        const QByteArray bytes = compileCatalogue(entries, {"--endianness=" + endianness});
        ASSERT_FALSE(bytes.isEmpty());
        MoFile file;
        ASSERT_TRUE(file.loadFromBytes(bytes));
        EXPECT_EQ(file.stringCount, quint32(entries.size() + 1));
        EXPECT_EQ(file.keys.size(), entries.size());
        EXPECT_FALSE(file.keys.contains(QString()));
        for (const auto& [key, text] : entries) {
            QString translation;
            ASSERT_TRUE(file.lookup(key, &translation)) << key.toStdString();
            EXPECT_EQ(translation, text);
            EXPECT_EQ(file.original(file.find(key)), key);
        }
        EXPECT_EQ(file.find("vehicle_300/name"), -1);
        EXPECT_EQ(file.find("vehicle_1"), -1);
    }
}

TEST(MoFileTest, StringsEndAtTheirZeroOrTheirRecordedLength)
{
    HandMadeCatalogue catalogue{{"", "key"}, {"", "abcdef"}, {2}};
    QByteArray bytes = catalogue.bytes();
    // Translation table entry 1: shorten "abcdef" to its first three bytes.
    setWord(bytes, int(wordAt(bytes, 16)) + 8, 3);
    MoFile file;
    ASSERT_TRUE(file.loadFromBytes(bytes));
    EXPECT_EQ(file.translation(1), "abc");
    EXPECT_EQ(file.original(5), QString());
    EXPECT_EQ(file.original(-1), QString());

    // A plural entry holds "singular\0plural" in one string, its texts
    // likewise: the key and the translation are the first of each.
    MoFile plural;
    ASSERT_TRUE(plural.loadFromBytes(
        compilePo("msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n"
                  "Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n"
                  "msgid \"one shell\"\nmsgid_plural \"%d shells\"\n"
                  "msgstr[0] \"eine Granate\"\nmsgstr[1] \"%d Granaten\"\n")));
    QString translation;
    EXPECT_TRUE(plural.lookup("one shell", &translation));
    EXPECT_EQ(translation, "eine Granate");
    EXPECT_EQ(plural.keys, QStringList{"one shell"});
}

TEST(MoFileTest, ProbingEndsInTablesWithoutAFreeSlot)
{
    // S = 1, S = 2 (no usable second hash) and S = 4 with every slot used:
    // a key that is missing must end the probe, not spin.
    const QStringList keys = {"", "a", "b", "c", "d"};
    const QStringList texts = {"", "A", "B", "C", "D"};
    for (const QList<quint32>& hashSlots :
         {QList<quint32>{3}, QList<quint32>{2, 3}, QList<quint32>{2, 3, 4, 5},
          QList<quint32>{5, 5, 5, 5, 5, 5, 5}}) {
        SCOPED_TRACE(hashSlots.size());
        MoFile file;
        ASSERT_TRUE(file.loadFromBytes(HandMadeCatalogue{keys, texts, hashSlots}.bytes()));
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(file.find(QString("missing%1").arg(i)), -1);
    }

    // With all four keys in four slots, each of them is reached.
    MoFile full;
    ASSERT_TRUE(full.loadFromBytes(HandMadeCatalogue{keys, texts, {1, 2, 3, 4, 5}}.bytes()));
    QString translation;
    for (int i = 1; i < keys.size(); ++i)
        EXPECT_TRUE(full.lookup(keys[i], &translation) && translation == texts[i]) << i;

    // With one slot every key's probe lands on the entry, so only the
    // comparison decides: keys compare without regard to case, in
    // catalogues of both byte orders.
    for (const bool bigEndian : {false, true}) {
        MoFile file;
        ASSERT_TRUE(file.loadFromBytes(
            HandMadeCatalogue{{"", "Hello"}, {"header", "Hallo"}, {2}, bigEndian}.bytes()));
        EXPECT_TRUE(file.lookup("HELLO", &translation) && translation == "Hallo") << bigEndian;
        EXPECT_TRUE(file.lookup("hello", &translation)) << bigEndian;
        EXPECT_FALSE(file.lookup("Hell", &translation)) << bigEndian;
    }
}

// Each case breaks one field of a valid msgfmt catalogue; the load must fail
// with its debug line and leave the object empty.
TEST(MoFileTest, RejectsEveryOffsetOrLengthOutsideTheFile)
{
    const QByteArray valid = compileCatalogue(manyEntries(5));
    ASSERT_GE(valid.size(), 28);
    const int size = valid.size();
    const int keyTable = int(wordAt(valid, 12));
    const int translationTable = int(wordAt(valid, 16));
    const int hashTable = int(wordAt(valid, 24));
    const int hashSize = int(wordAt(valid, 20));

    struct Case
    {
        const char* name;
        int offset; // of the word to set; -1: cut the file to `value` bytes
        quint32 value;
        const char* debugLine;
    };
    const Case cases[] = {
        {"empty file", -1, 0, "Magic failed."},
        {"bad magic", 0, 0x12345678, "Magic failed."},
        {"header cut", -1, 20, nullptr},
        {"no hash table", 20, 0, "Hash table empty."},
        {"key table past end", 12, quint32(size - 8), nullptr},
        {"translation table past end", 16, quint32(size), nullptr},
        {"table offset wraps", 12, 0xFFFFFFF8u, nullptr},
        {"huge string count", 8, 0x7FFFFFFFu, nullptr},
        {"key offset past end", keyTable + 12, quint32(size), nullptr},
        {"key length past end", keyTable + 16, quint32(size), nullptr},
        {"translation offset wraps", translationTable + 12, 0xFFFFFFFFu, nullptr},
        {"hash table past end", 24, quint32(size - 4 * hashSize + 4), nullptr},
        {"hash size too large", 20, 0x40000000u, nullptr},
        {"hash slot names no entry", hashTable, wordAt(valid, 8) + 1, nullptr},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        QByteArray bytes = valid;
        if (test.offset < 0)
            bytes.truncate(int(test.value));
        else
            setWord(bytes, test.offset, test.value);
        DebugCapture debug;
        MoFile file;
        EXPECT_FALSE(file.loadFromBytes(bytes));
        EXPECT_FALSE(file.isLoaded());
        EXPECT_TRUE(file.keys.isEmpty());
        EXPECT_EQ(file.find("vehicle_1/name"), -1);
        if (test.debugLine)
            EXPECT_TRUE(DebugCapture::lines().contains(QLatin1String(test.debugLine)))
                << DebugCapture::lines().join('|').toStdString();
        else
            EXPECT_FALSE(DebugCapture::lines().isEmpty());
    }

    MoFile file;
    EXPECT_TRUE(file.loadFromBytes(valid));
    QTemporaryDir directory;
    const QString path = directory.filePath("absent.mo");
    DebugCapture debug;
    EXPECT_FALSE(file.load(path));
    EXPECT_TRUE(DebugCapture::lines().contains("Failed to open file: " + path));
}

namespace {
class MoReaderCachedTest : public testing::Test
{
protected:
    void SetUp() override
    {
        settings.gavrelPath = game.path();
        log.lines.clear();
    }

    void writeCatalogue(const QString& name, const Entries& entries)
    {
        const QByteArray bytes = compileCatalogue(entries);
        ASSERT_FALSE(bytes.isEmpty());
        game.writeFile("res/text/LC_MESSAGES/" + name + ".mo", bytes);
    }

    QString cataloguePath(const QString& name) const
    {
        return QDir::toNativeSeparators(game.path() + "/res/text/LC_MESSAGES/" + name + ".mo");
    }

    GameTree game;
    LogCapture log;
    Settings settings{QString()};
    MoReaderCached reader;
};
} // namespace

TEST_F(MoReaderCachedTest, ReadsTheNamedCatalogueAndWarnsOfMissingKeys)
{
    // Texts without a colon come back untouched, reading nothing.
    for (const QString text : {"Plain name", "#menu", ""})
        EXPECT_EQ(reader.translate(text), text);
    EXPECT_TRUE(reader.currentPath().isEmpty());
    ASSERT_NO_FATAL_FAILURE(
        writeCatalogue("menu", {{"nations/ardenia", "Ardenia"}, {"a", "first"}}));
    EXPECT_EQ(reader.translate("#menu:nations/ardenia"), "Ardenia");
    EXPECT_EQ(reader.currentPath(), cataloguePath("menu"));
    // Every "#" goes from the catalogue's name; parts after a second ":" are unused.
    EXPECT_EQ(reader.translate("me#nu#:a:ignored"), "first");
    EXPECT_TRUE(log.lines.isEmpty()) << log.lines.join('|').toStdString();

    EXPECT_EQ(reader.translate("#menu:nations/nowhere"), "nations/nowhere");
    EXPECT_EQ(log.lines, QStringList{"[Warning] Could not translate: nations/nowhere"});
}

TEST_F(MoReaderCachedTest, UnreadableCatalogueGivesEmptyTextAndKeepsTheOneInMemory)
{
    ASSERT_NO_FATAL_FAILURE(writeCatalogue("menu", {{"a", "A"}}));
    game.writeFile("res/text/LC_MESSAGES/broken.mo", "not a catalogue");
    EXPECT_EQ(reader.translate("#menu:a"), "A");

    QFile::remove(cataloguePath("menu"));
    EXPECT_EQ(reader.translate("#absent:a"), QString());
    EXPECT_EQ(reader.translate("#broken:a"), QString());
    EXPECT_EQ(reader.currentPath(), cataloguePath("menu"));
    // The removed file's keys still come from memory.
    EXPECT_EQ(reader.translate("#menu:a"), "A");
    EXPECT_FALSE(log.contains("[Warning] Could not translate: a"));
}

TEST_F(MoReaderCachedTest, ChangingCatalogueOrGamePathReadsTheFileAgain)
{
    ASSERT_NO_FATAL_FAILURE(writeCatalogue("menu", {{"a", "old"}}));
    ASSERT_NO_FATAL_FAILURE(writeCatalogue("vehicles", {{"a", "tank"}}));
    EXPECT_EQ(reader.translate("#menu:a"), "old");

    // Same catalogue: the rewritten file is not read.
    ASSERT_NO_FATAL_FAILURE(writeCatalogue("menu", {{"a", "new"}}));
    EXPECT_EQ(reader.translate("#menu:a"), "old");
    EXPECT_EQ(reader.translate("#vehicles:a"), "tank");
    EXPECT_EQ(reader.translate("#menu:a"), "new");

    GameTree other;
    other.writeFile("res/text/LC_MESSAGES/menu.mo", compileCatalogue({{"a", "second game"}}));
    settings.gavrelPath = other.path();
    EXPECT_EQ(reader.translate("#menu:a"), "second game");
}
