// Opening a large installation's archives, and 10,000 archive lookups
// answered by the member index against the plain walk over every archive.
//
// Run bench/run.sh, which generates the installation (--scale 100: about a
// hundred archives and 200,000 members) before running this.

#include "FileManager.h"
#include "Settings.h"

#include "BenchGame.h"

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace {
QString gameDirectory()
{
    return benchGameDirectory();
}

struct Installation
{
    Installation()
    {
        settings.gavrelPath = gameDirectory();
        files.resourcesConfigPath = gameDirectory() + QStringLiteral("/ferrox-resources.cfg");
        files.loadZipFiles();
    }
    Settings settings{QString()};
    FileManager files;
};

Installation& installation()
{
    static Installation value;
    return value;
}

// 10,000 names: four in five are members (with their case scrambled, as a
// modder's file might spell them), one in five is in no archive.
QStringList lookupNames(FileManager& files)
{
    QStringList members;
    for (int a = 0; a < files.archiveCount(); ++a) {
        for (const ZipArchive::Member& member : files.archive(a).members())
            members.append(QString::fromLocal8Bit(member.name));
    }
    QRandomGenerator random(42);
    QStringList names;
    for (int i = 0; i < 10000; ++i) {
        if (i % 5 == 4) {
            names.append(QStringLiteral("vehicles/nowhere/missing_%1.xml").arg(i));
            continue;
        }
        QString name = members[int(random.bounded(qsizetype(members.size())))];
        for (QChar& c : name) {
            if (random.bounded(4) == 0)
                c = c.toUpper();
        }
        names.append(name);
    }
    return names;
}

void BM_OpenArchives(benchmark::State& state)
{
    Settings settings{QString()};
    settings.gavrelPath = gameDirectory();
    FileManager files;
    files.resourcesConfigPath = gameDirectory() + QStringLiteral("/ferrox-resources.cfg");
    for (auto _ : state)
        files.loadZipFiles();
    state.counters["archives"] = files.archiveCount();
}
BENCHMARK(BM_OpenArchives)->Unit(benchmark::kMillisecond)->Iterations(3);

void lookups(benchmark::State& state, FileManager::LookupStrategy strategy)
{
    FileManager& files = installation().files;
    static const QStringList names = lookupNames(files);
    files.setLookupStrategy(strategy);
    qint64 found = 0;
    for (auto _ : state) {
        found = 0;
        for (const QString& name : names) {
            std::unique_ptr<QIODevice> device(files.openArchiveFile(name));
            found += device ? 1 : 0;
        }
    }
    files.setLookupStrategy(FileManager::LookupStrategy::Index);
    state.counters["found"] = double(found);
    state.counters["lookups/s"] =
        benchmark::Counter(double(names.size()), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_TenThousandLookups_Index(benchmark::State& state)
{
    lookups(state, FileManager::LookupStrategy::Index);
}
BENCHMARK(BM_TenThousandLookups_Index)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_TenThousandLookups_Walk(benchmark::State& state)
{
    lookups(state, FileManager::LookupStrategy::Walk);
}
BENCHMARK(BM_TenThousandLookups_Walk)->Unit(benchmark::kMillisecond)->Iterations(1);
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (!QFile::exists(gameDirectory() + QStringLiteral("/ferrox-resources.cfg"))) {
        std::fprintf(stderr, "No installation at %s: run bench/run.sh\n",
                     gameDirectory().toLocal8Bit().constData());
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
