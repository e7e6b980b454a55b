// Message catalogues: real ones compiled by GNU msgfmt, and hand-made ones
// with broken offsets and odd hash tables.

#include "LogCapture.h"
#include "MoFile.h"
#include "MoReaderCached.h"
#include "Msgfmt.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TestRoot.h"

#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

#include <tuple>

namespace {
using Entries = CatalogueEntries;

void setWord(QByteArray& bytes, int offset, quint32 value)
{
    qToLittleEndian(value, bytes.data() + offset);
}

quint32 wordAt(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

// A little-endian catalogue laid out by hand: header, key table,
// translation table, hash table and strings. A slot is 0 when free, else
// entry number + 1.
QByteArray handMade(const QStringList& keys, const QStringList& texts,
                    const QList<quint32>& hashSlots)
{
    const quint32 count = quint32(keys.size()), hashTable = 28 + 16 * count;
    QList<quint32> words = {MoFile::Magic, 0, count, 28, 28 + 8 * count, quint32(hashSlots.size()),
                            hashTable};
    QByteArray strings;
    for (const QString& text : keys + texts) {
        words << quint32(text.toUtf8().size())
              << hashTable + 4 * quint32(hashSlots.size()) + quint32(strings.size());
        strings += text.toUtf8() + '\0';
    }
    words += hashSlots;
    QByteArray out(4 * words.size(), '\0');
    for (int i = 0; i < words.size(); ++i)
        setWord(out, 4 * i, words[i]);
    return out + strings;
}

QStringList debugLines;
} // namespace

TEST(MoFileTest, FindsEveryEntryOfMsgfmtCataloguesInBothByteOrders)
{
    // Keys and texts keep quotes, colons and UTF-8.
    Entries entries = {
        {"it's \"quoted\"", "Ölfass – \"x\""}, {"nations/ardenia", "Ardenia"}, {"日本", "Japan"}};
    for (int i = 0; i < 300; ++i)
        entries.append({QString("vehicle_%1/name").arg(i), QString("Fahrzeug %1 ä").arg(i)});
    for (const QString endianness : {"little", "big"}) {
        SCOPED_TRACE(endianness.toStdString());
        MoFile file;
        ASSERT_TRUE(file.loadFromBytes(compileCatalogue(entries, {"--endianness=" + endianness})));
        EXPECT_EQ(file.keys.size(), entries.size());
        EXPECT_FALSE(file.keys.contains(QString()));
        for (const auto& [key, text] : entries) {
            QString translation;
            ASSERT_TRUE(file.lookup(key, &translation)) << key.toStdString();
            EXPECT_EQ(translation, text);
            // In another case the hash probes other slots; the key is found
            // all the same.
            for (const QString& otherCase : {key.toUpper(), key.toUpper().replace("NAME", "Name")})
                EXPECT_EQ(file.find(otherCase), file.find(key)) << otherCase.toStdString();
        }
        EXPECT_EQ(file.find("vehicle_300/name"), -1);
    }
    // A plural entry holds "singular\0plural" in one string, its texts
    // likewise: the key and the translation are the first of each.
    MoFile plural;
    ASSERT_TRUE(plural.loadFromBytes(
        compilePo("msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n"
                  "Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n"
                  "msgid \"one shell\"\nmsgid_plural \"%d shells\"\n"
                  "msgstr[0] \"eine Granate\"\nmsgstr[1] \"%d Granaten\"\n")));
    EXPECT_EQ(plural.keys, QStringList{"one shell"});
    EXPECT_EQ(plural.translation(plural.find("one shell")), "eine Granate");
}

TEST(MoFileTest, HandMadeTablesEndEveryProbeAndStringsTheirRecordedLength)
{
    // S = 1, S = 2 (no usable second hash) and S = 4 with every slot used:
    // a key that is missing must end the probe, not spin.
    const QStringList keys = {"", "a", "b", "c", "d"};
    const QStringList texts = {"", "A", "B", "C", "D"};
    for (const QList<quint32>& hashSlots : {QList<quint32>{3}, QList<quint32>{2, 3},
                                            QList<quint32>{2, 3, 4, 5}, QList<quint32>(7, 5)}) {
        SCOPED_TRACE(hashSlots.size());
        MoFile file;
        ASSERT_TRUE(file.loadFromBytes(handMade(keys, texts, hashSlots)));
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(file.find(QString("missing%1").arg(i)), -1);
    }
    // With all four keys in four slots, each of them is reached.
    MoFile file;
    QString translation;
    ASSERT_TRUE(file.loadFromBytes(handMade(keys, texts, {1, 2, 3, 4, 5})));
    for (int i = 1; i < keys.size(); ++i)
        EXPECT_TRUE(file.lookup(keys[i], &translation) && translation == texts[i]) << i;

    // With one slot every key's probe lands on the entry, so only the
    // comparison decides: keys compare without regard to case.
    ASSERT_TRUE(file.loadFromBytes(handMade({"", "Hello"}, {"header", "Hallo"}, {2})));
    EXPECT_TRUE(file.lookup("HELLO", &translation) && translation == "Hallo");
    EXPECT_FALSE(file.lookup("Hell", &translation));

    // A string ends at its zero or at its recorded length, whichever comes
    // first: shorten "abcdef" (translation entry 1) to three bytes.
    QByteArray bytes = handMade({"", "key"}, {"", "abcdef"}, {2});
    setWord(bytes, int(wordAt(bytes, 16)) + 8, 3);
    ASSERT_TRUE(file.loadFromBytes(bytes));
    EXPECT_EQ(file.translation(1), "abc");
    EXPECT_EQ(file.original(5), QString());
    EXPECT_EQ(file.original(-1), QString());
}

// Each case breaks one field of a valid msgfmt catalogue; the load must fail
// with a debug line and leave the object empty.
TEST(MoFileTest, RejectsEveryOffsetOrLengthOutsideTheFile)
{
    const QByteArray valid = compileCatalogue({{"a", "A"}, {"b", "B"}, {"c", "C"}});
    ASSERT_GE(valid.size(), 28);
    const quint32 size = quint32(valid.size());
    const int keyTable = int(wordAt(valid, 12));
    // What breaks, the offset of the word to set (-1: cut the file to
    // `value` bytes) and its value.
    const std::tuple<const char*, int, quint32> cases[] = {
        {"empty file", -1, 0},
        {"bad magic", 0, 0x12345678},
        {"header cut", -1, 20},
        {"no hash table", 20, 0},
        {"key table past end", 12, size - 8},
        {"table offset wraps", 12, 0xFFFFFFF8u},
        {"huge string count", 8, 0x7FFFFFFFu},
        {"key offset past end", keyTable + 12, size},
        {"translation offset wraps", int(wordAt(valid, 16)) + 12, 0xFFFFFFFFu},
        {"hash table past end", 24, size - 4 * wordAt(valid, 20) + 4},
        {"hash size too large", 20, 0x40000000u},
        {"hash slot names no entry", int(wordAt(valid, 24)), wordAt(valid, 8) + 1},
    };
    for (const auto& [name, offset, value] : cases) {
        SCOPED_TRACE(name);
        QByteArray bytes = valid;
        if (offset < 0)
            bytes.truncate(int(value));
        else
            setWord(bytes, offset, value);
        debugLines.clear();
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& line) { debugLines << line; });
        MoFile file;
        EXPECT_FALSE(file.loadFromBytes(bytes));
        qInstallMessageHandler(previous);
        EXPECT_FALSE(file.isLoaded());
        EXPECT_TRUE(file.keys.isEmpty());
        EXPECT_EQ(debugLines.size(), 1);
    }
}

TEST(MoReaderCachedTest, ReadsAFileOnlyWhenCatalogueOrGameChangeAndKeepsItOnFailure)
{
    GameTree game;
    LogCapture log;
    Settings settings{QString()};
    settings.gavrelPath = game.path();
    MoReaderCached reader;
    log.lines.clear();
    const QString menuPath = game.path() + "/res/text/LC_MESSAGES/menu.mo";
    // Texts without a colon come back untouched, reading nothing.
    for (const QString text : {"Plain name", "#menu", ""})
        EXPECT_EQ(reader.translate(text), text);
    EXPECT_TRUE(reader.currentPath().isEmpty());
    writeCatalogue(game, "menu", {{"nations/ardenia", "Ardenia"}, {"a", "old"}});
    writeCatalogue(game, "vehicles", {{"a", "tank"}});
    game.writeFile("res/text/LC_MESSAGES/broken.mo", "not a catalogue");
    EXPECT_EQ(reader.translate("#menu:nations/ardenia"), "Ardenia");
    EXPECT_EQ(reader.currentPath(), menuPath);
    // Every "#" goes from the catalogue's name; parts after a second ":" are
    // unused. The same catalogue is not read again.
    writeCatalogue(game, "menu", {{"a", "new"}});
    EXPECT_EQ(reader.translate("me#nu#:a:ignored"), "old");
    EXPECT_EQ(reader.translate("#vehicles:a"), "tank");
    EXPECT_EQ(reader.translate("#menu:a"), "new");
    EXPECT_TRUE(log.lines.isEmpty()) << log.lines.join('|').toStdString();
    EXPECT_EQ(reader.translate("#menu:nations/nowhere"), "nations/nowhere");
    EXPECT_EQ(log.lines, QStringList{"[Warning] Could not translate: nations/nowhere"});

    // A catalogue that cannot be read gives empty text and keeps the one in
    // memory: the removed file's keys still come from there.
    QFile::remove(menuPath);
    EXPECT_EQ(reader.translate("#absent:a"), QString());
    EXPECT_EQ(reader.translate("#broken:a"), QString());
    EXPECT_EQ(reader.currentPath(), menuPath);
    EXPECT_EQ(reader.translate("#menu:a"), "new");

    GameTree other;
    writeCatalogue(other, "menu", {{"a", "second game"}});
    settings.gavrelPath = other.path();
    EXPECT_EQ(reader.translate("#menu:a"), "second game");
}
