#pragma once

#include <QString>

#include <cstdlib>

// The large installation the benchmarks read: bench/run.sh generates it at
// FERROX_BENCH_GAME_DIR; the environment variable FERROX_BENCH_GAME points
// elsewhere.
inline QString benchGameDirectory()
{
    const char* overridden = std::getenv("FERROX_BENCH_GAME");
    return QString::fromLocal8Bit(overridden ? overridden : FERROX_BENCH_GAME_DIR);
}
