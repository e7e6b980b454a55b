#pragma once

#include "WeakSpotMap.h"

#include <QImage>
#include <QObject>

#include <atomic>
#include <memory>
#include <thread>

class btCollisionWorld;

// Computes a weak-spot map off the GUI thread: start() copies the ray world
// as it stands (RayWorldSnapshot) and hands the copy to a worker thread,
// which spreads the pixels over the cores. Progress and the result arrive
// on the GUI thread through queued signals; a newer start() or cancel()
// drops whatever the older work would have delivered.
class WeakSpotJob : public QObject
{
    Q_OBJECT
public:
    explicit WeakSpotJob(QObject* parent = nullptr);
    ~WeakSpotJob() override;

    void start(const btCollisionWorld& world, const ShellParamaters& shell,
               const WeakSpotView& view, int threads);
    void cancel();

signals:
    // Rows of the map done so far, of rows.
    void progress(int done, int rows);
    // The coloured map and its pixels, for the view it was started with.
    void finished(const QImage& map, const WeakSpotShares& shares);

private:
    void join();

    std::thread worker;
    std::shared_ptr<std::atomic<bool>> stop;
    int generation = 0;
};
