// The vehicle table of a large installation: a full rebuild (tank list,
// every nation's list.xml, the catalogue lookups and the inserts), the
// lookups by display name that loading a vehicle makes, and the query that
// fills the tank list.
//
// Run bench/run.sh, which generates the installation (--scale 100: 25
// nations, about 800 vehicles, a hundred archives) before running this.

#include "Database.h"
#include "FileManager.h"
#include "MoReaderCached.h"
#include "Settings.h"

#include "BenchGame.h"

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QSqlQuery>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>

namespace {
QString gameDirectory()
{
    return benchGameDirectory();
}

// The managers as the program has them after start-up, reading the
// generator's own archive list and tank list.
struct Installation
{
    Installation()
    {
        settings.gavrelPath = gameDirectory();
        files.resourcesConfigPath = gameDirectory() + QStringLiteral("/ferrox-resources.cfg");
        files.loadZipFiles();
        database.tankListPath = gameDirectory() + QStringLiteral("/ferrox-tank_list.cfg");
        database.rebuildDatabase();
    }
    Settings settings{QString()};
    FileManager files;
    MoReaderCached reader;
    Database database;
};

Installation& installation()
{
    static Installation value;
    return value;
}

QString allWord()
{
    return installation().database.nations.value(0);
}

QStringList displayNames()
{
    const QString all = allWord();
    std::unique_ptr<QSqlQuery> query(installation().database.query(all, all, all));
    QStringList names;
    while (query->next())
        names.append(query->value(Database::TranslatedNameColumn).toString());
    return names;
}

void BM_RebuildDatabase(benchmark::State& state)
{
    Database& database = installation().database;
    for (auto _ : state)
        database.rebuildDatabase();
    state.counters["vehicles"] = double(displayNames().size());
    state.counters["nations"] = double(database.nations.size() - 1);
}
BENCHMARK(BM_RebuildDatabase)->Unit(benchmark::kMillisecond)->Iterations(5);

// 1,000 names drawn from the table, one in ten not in it.
void BM_ThousandLookupsByDisplayName(benchmark::State& state)
{
    Database& database = installation().database;
    const QStringList names = displayNames();
    QRandomGenerator random(42);
    QStringList wanted;
    for (int i = 0; i < 1000; ++i) {
        wanted.append(i % 10 == 9 ? QStringLiteral("No Such Vehicle %1").arg(i)
                                  : names[int(random.bounded(qsizetype(names.size())))]);
    }
    qint64 found = 0;
    for (auto _ : state) {
        found = 0;
        for (const QString& name : wanted)
            found += database.xmlFile(name).isEmpty() ? 0 : 1;
    }
    state.counters["found"] = double(found);
    state.counters["lookups/s"] =
        benchmark::Counter(double(wanted.size()), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ThousandLookupsByDisplayName)->Unit(benchmark::kMillisecond);

void BM_ListEveryVehicle(benchmark::State& state)
{
    const QString all = allWord();
    qint64 rows = 0;
    for (auto _ : state) {
        std::unique_ptr<QSqlQuery> query(installation().database.query(all, all, all));
        rows = 0;
        while (query->next())
            ++rows;
    }
    state.counters["rows"] = double(rows);
}
BENCHMARK(BM_ListEveryVehicle)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (!QFile::exists(gameDirectory() + QStringLiteral("/ferrox-tank_list.cfg"))) {
        std::fprintf(stderr, "No installation with a tank list at %s: run bench/run.sh\n",
                     gameDirectory().toLocal8Bit().constData());
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
