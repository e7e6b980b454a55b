// Parse throughput of the game's documents: large packed vehicle-like
// documents made here, held against building their DOM directly and against
// parsing their text, and the largest packed file of the sample
// installation when it holds one.

#include "BinaryReader.h"
#include "MessageBoxes.h"
#include "PackedXmlReader.h"

#include <QBuffer>
#include <QDirIterator>
#include <QFile>
#include <QVarLengthArray>
#include <QtEndian>

#include <benchmark/benchmark.h>

#include <cstring>
#include <ctime>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {
// A small writer of the packed form: a value is its type and bytes, an
// element its own value and named children; end offsets are summed up as
// the data block is laid out.
struct Value
{
    int type;
    QByteArray bytes;
};

struct Element
{
    Value own{1, {}};
    QList<QPair<int, Value>> children;
};

void appendLe16(QByteArray& out, int value)
{
    char bytes[2];
    qToLittleEndian<qint16>(qint16(value), bytes);
    out.append(bytes, 2);
}

void appendLe32(QByteArray& out, quint32 value)
{
    char bytes[4];
    qToLittleEndian<quint32>(value, bytes);
    out.append(bytes, 4);
}

QByteArray record(const Element& element)
{
    QByteArray entries;
    QByteArray data = element.own.bytes;
    const quint32 ownEnd = quint32(data.size());
    for (const auto& [nameIndex, value] : element.children) {
        data += value.bytes;
        appendLe16(entries, nameIndex);
        appendLe32(entries, (quint32(value.type) << 28) | quint32(data.size()));
    }
    QByteArray out;
    appendLe16(out, int(element.children.size()));
    appendLe32(out, (quint32(element.own.type) << 28) | ownEnd);
    return out + entries + data;
}

Value string(const QByteArray& text)
{
    return {1, text};
}

Value integer(qint32 number)
{
    QByteArray bytes;
    appendLe32(bytes, quint32(number));
    return {2, bytes};
}

Value floats(int count, float seed)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        const float number = seed * float(i + 1) * 0.37f;
        quint32 bits;
        std::memcpy(&bits, &number, 4);
        appendLe32(bytes, bits);
    }
    return {3, bytes};
}

Value element(const Element& nested)
{
    return {0, record(nested)};
}

const QList<QByteArray> names = {
    "hull",      "turret",     "gun",         "armor",         "transform", "position", "name",
    "maxHealth", "weight",     "models",      "undamaged",     "destroyed", "enabled",  "hitTester",
    "node",      "identifier", "pitchLimits", "rotationSpeed", "shell",     "caliber"};
enum Name
{
    Hull,
    Turret,
    Gun,
    Armor,
    Transform,
    Position,
    NameTag,
    MaxHealth,
    Weight,
    Models,
    Undamaged,
    Destroyed,
    Enabled,
    HitTester,
    NodeTag,
    Identifier,
    PitchLimits,
    RotationSpeed,
    Shell,
    Caliber
};

// One gun: a few scalars, a matrix, a vector and its models.
Element gun(int number)
{
    Element models;
    models.children = {{Undamaged, string("vehicles/borvia/B05/normal/lod0/gun_0" +
                                          QByteArray::number(number % 10) + ".model")},
                       {Destroyed, string("vehicles/borvia/B05/crash/lod0/gun_0" +
                                          QByteArray::number(number % 10) + ".model")}};
    Element shell;
    shell.own = string("shell_" + QByteArray::number(number));
    shell.children = {{Caliber, integer(75 + number % 50)}, {Enabled, {4, QByteArray(1, '\1')}}};
    Element result;
    result.children = {{NameTag, string("Gun_" + QByteArray::number(number))},
                       {MaxHealth, integer(120 + number)},
                       {Weight, floats(1, float(number))},
                       {Transform, floats(12, float(number) + 0.5f)},
                       {PitchLimits, floats(2, -0.2f)},
                       {Models, element(models)},
                       {Shell, element(shell)},
                       {Shell, element(shell)}};
    return result;
}

Element turret(int number, int gunCount)
{
    Element result;
    result.children = {{NameTag, string("Turret_" + QByteArray::number(number))},
                       {Position, floats(3, float(number))},
                       {RotationSpeed, integer(30)},
                       {Armor, floats(3, 80)}};
    for (int i = 0; i < gunCount; ++i)
        result.children.append({Gun, element(gun(number * gunCount + i))});
    return result;
}

// A vehicle list of the given number of hulls, each with turrets and guns,
// to several megabytes for the large cases.
QByteArray vehicleDocument(int hulls)
{
    Element root;
    root.children.append({Identifier, string("benchmark vehicles")});
    for (int h = 0; h < hulls; ++h) {
        Element hull;
        hull.children = {{NameTag, string("Hull_" + QByteArray::number(h))},
                         {Transform, floats(12, float(h))},
                         {HitTester, string("vehicles/borvia/collision/hull.model")},
                         {MaxHealth, integer(900 + h)}};
        for (int t = 0; t < 3; ++t)
            hull.children.append({Turret, element(turret(h * 3 + t, 6))});
        root.children.append({Hull, element(hull)});
    }

    QByteArray file;
    appendLe32(file, PackedXmlReader::Magic);
    file.append('\0');
    for (const QByteArray& name : names)
        file += name + QByteArray(1, '\0');
    file.append('\0');
    return file + record(root);
}

QDomDocument readDocument(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    BinaryReader binary(&buffer);
    PackedXmlReader reader(&binary);
    return reader.read(QStringLiteral("vehicles/list.xml"));
}

void runParse(benchmark::State& state, const QByteArray& bytes)
{
    setMessageBoxHandler([](const MessageBoxRequest&) { return int(QMessageBox::Ok); });
    for (auto _ : state) {
        QDomDocument document = readDocument(bytes);
        benchmark::DoNotOptimize(document);
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
    state.counters["file_MB"] = double(bytes.size()) / (1024 * 1024);
    setMessageBoxHandler({});
}

// About 5.6 kB of packed data for each hull.
constexpr double BytesPerHull = 5560;

int hullsFor(double megabytes)
{
    return qMax(1, int(megabytes * 1024 * 1024 / BytesPerHull));
}

// The DOM of a document as the calls that build it: an element opens with
// its tag, a text is appended to the element open at the time, and Close
// ends the open element. Tags and texts are made beforehand, so replaying
// the calls costs nothing but the DOM's own work.
struct DomCall
{
    enum Kind
    {
        Open,
        Text,
        Close
    } kind;
    QString value;
};

void recordCalls(const QDomNode& node, QVector<DomCall>& calls)
{
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        if (child.isText()) {
            calls.append({DomCall::Text, child.nodeValue()});
        } else if (child.isElement()) {
            calls.append({DomCall::Open, child.nodeName()});
            recordCalls(child, calls);
            calls.append(DomCall{DomCall::Close, QString()});
        }
    }
}

QDomDocument buildDom(const QVector<DomCall>& calls)
{
    QDomDocument document;
    // The document itself comes to life with its first element only.
    QVarLengthArray<QDomNode, 32> open;
    for (const DomCall& call : calls) {
        switch (call.kind) {
        case DomCall::Open: {
            QDomElement element = document.createElement(call.value);
            (open.isEmpty() ? QDomNode(document) : open.last()).appendChild(element);
            open.append(element);
            break;
        }
        case DomCall::Text:
            open.last().appendChild(document.createTextNode(call.value));
            break;
        case DomCall::Close:
            open.removeLast();
            break;
        }
    }
    return document;
}

// A document in its three forms, made once for each size.
struct SizedDocument
{
    QByteArray packed;
    QByteArray text;
    QVector<DomCall> calls;
};

const SizedDocument& documentOfTenthsOfMegabytes(int tenths)
{
    static QMap<int, SizedDocument> documents;
    if (!documents.contains(tenths)) {
        SizedDocument made;
        made.packed = vehicleDocument(hullsFor(tenths / 10.0));
        const QDomDocument read = readDocument(made.packed);
        made.text = read.toString(1).toUtf8();
        recordCalls(read, made.calls);
        documents.insert(tenths, made);
    }
    return documents[tenths];
}

// Processor seconds of this process: other work on a shared machine does
// not count against the reader, as wall time would.
double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// Seconds for work(), the document it makes destroyed within the time, as
// a reader's caller destroys it in the end.
template <typename Work> double secondsFor(Work work)
{
#ifdef __GLIBC__
    // Each build starts from a heap with no free memory held back, as the
    // program's first large document does, whatever ran before it.
    malloc_trim(0);
#endif
    const double start = cpuSeconds();
    {
        QDomDocument document = work();
        benchmark::DoNotOptimize(document);
    }
    return cpuSeconds() - start;
}

// The packed reader on documents of 0.1, 1, 5 and 21 MB (the argument is
// tenths of a megabyte), held against two floors timed in the same
// iterations, so that a busy machine slows all three alike:
// - dom: the same DOM built straight through QDomDocument's calls, the least
//   any reader can cost; dom_ratio is the packed read's time over it;
// - text: Qt's own parser building the DOM from the document's text;
//   text_ratio is the packed read's time over it (below 1: faster).
// Cost linear in the size shows as MB_per_s and the ratios staying level
// from the smallest document to the largest.
void BM_PackedVehicles(benchmark::State& state)
{
    const SizedDocument& document = documentOfTenthsOfMegabytes(int(state.range(0)));
    setMessageBoxHandler([](const MessageBoxRequest&) { return int(QMessageBox::Ok); });
    double readSeconds = 0, domSeconds = 0, textSeconds = 0;
    for (auto _ : state) {
        domSeconds += secondsFor([&] { return buildDom(document.calls); });
        textSeconds += secondsFor([&] {
            QDomDocument parsed;
            parsed.setContent(document.text);
            return parsed;
        });
        const double read = secondsFor([&] { return readDocument(document.packed); });
        readSeconds += read;
        state.SetIterationTime(read);
    }
    setMessageBoxHandler({});
    const double megabytes = double(document.packed.size()) / (1024 * 1024);
    const double iterations = double(state.iterations());
    state.SetBytesProcessed(state.iterations() * document.packed.size());
    state.counters["file_MB"] = megabytes;
    state.counters["MB_per_s"] = megabytes * iterations / readSeconds;
    state.counters["dom_MB_per_s"] = megabytes * iterations / domSeconds;
    state.counters["dom_ratio"] = readSeconds / domSeconds;
    state.counters["text_ratio"] = readSeconds / textSeconds;
}
BENCHMARK(BM_PackedVehicles)
    ->Arg(1)
    ->Arg(10)
    ->Arg(50)
    ->Arg(200)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

QString largestSamplePackedFile()
{
    QString best;
    qint64 bestSize = -1;
    QDirIterator it(QStringLiteral(FERROX_SAMPLE_GAME_DIR), QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (!file.open(QIODevice::ReadOnly) || file.size() <= bestSize)
            continue;
        if (file.read(4) == QByteArray::fromHex("454ea162")) {
            best = file.fileName();
            bestSize = file.size();
        }
    }
    return best;
}

void BM_LargestSamplePackedFile(benchmark::State& state)
{
    static const QString path = largestSamplePackedFile();
    if (path.isEmpty()) {
        state.SkipWithError("no packed file in the sample installation");
        return;
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    state.SetLabel(path.mid(QStringLiteral(FERROX_SAMPLE_GAME_DIR).size() + 1).toStdString());
    runParse(state, file.readAll());
}
BENCHMARK(BM_LargestSamplePackedFile)->Unit(benchmark::kMicrosecond);
} // namespace

BENCHMARK_MAIN();
