#include "WeakSpotJob.h"

#include "RayWorldSnapshot.h"

#include <QMetaObject>
#include <QPointer>

WeakSpotJob::WeakSpotJob(QObject* parent) : QObject(parent) {}

WeakSpotJob::~WeakSpotJob()
{
    cancel();
}

void WeakSpotJob::join()
{
    if (worker.joinable())
        worker.join();
}

void WeakSpotJob::cancel()
{
    ++generation;
    if (stop)
        *stop = true;
    join();
}

void WeakSpotJob::start(const btCollisionWorld& world, const ShellParamaters& shell,
                        const WeakSpotView& view, int threads)
{
    cancel();
    const int ticket = generation;
    stop = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<RayWorldSnapshot> snapshot = RayWorldSnapshot::capture(world);
    QPointer<WeakSpotJob> self(this);
    const std::shared_ptr<std::atomic<bool>> stopFlag = stop;
    const int rows = view.size.height();
    // The lambdas queued to this object run on the GUI thread, and only if
    // the job still exists and no newer work replaced this one.
    auto deliver = [self, ticket](auto function) {
        QMetaObject::invokeMethod(
            self.data(),
            [self, ticket, function] {
                if (self && self->generation == ticket)
                    function(*self);
            },
            Qt::QueuedConnection);
    };
    worker = std::thread([=] {
        snapshot->build();
        const QVector<WeakSpotPixel> pixels = WeakSpotMap::compute(
            snapshot->world(), shell, view, threads,
            [&](int doneRows) {
                deliver([doneRows, rows](WeakSpotJob& job) { emit job.progress(doneRows, rows); });
            },
            stopFlag.get());
        if (*stopFlag)
            return;
        const QImage map = WeakSpotMap::image(pixels, view.size);
        const WeakSpotShares shares = WeakSpotMap::shares(pixels);
        deliver([map, shares](WeakSpotJob& job) { emit job.finished(map, shares); });
    });
}
