#include "WeakSpotDisplay.h"

#include "Physics.h"
#include "RenderWidget.h"
#include "TankLoader.h"
#include "TurretGunChooser.h"

#include <QCheckBox>
#include <QLinearGradient>
#include <QPainter>
#include <QProgressBar>

#include <thread>

namespace {

template <typename T> void append(QByteArray& key, const T& value)
{
    key.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

} // namespace

WeakSpotDisplay::WeakSpotDisplay(RenderWidget* widget, QCheckBox* box, QProgressBar* bar,
                                 QObject* parent)
    : QObject(parent), viewport(widget), toggle(box), progress(bar)
{
    progress->setVisible(false);
    restTimer.setInterval(RestMs);
    connect(&restTimer, &QTimer::timeout, this, &WeakSpotDisplay::look);
    connect(toggle, &QCheckBox::toggled, this, &WeakSpotDisplay::toggled);
    connect(&job, &WeakSpotJob::progress, this, [this](int done, int rows) {
        progress->setMaximum(rows);
        progress->setValue(done);
    });
    connect(&job, &WeakSpotJob::finished, this,
            [this](const QImage& map, const WeakSpotShares&) { show(map); });
}

bool WeakSpotDisplay::active() const
{
    const TankLoader* loader = TankLoader::instance();
    return toggle->isChecked() && viewport->armorMode && loader && loader->loaded &&
           Physics::instance();
}

QByteArray WeakSpotDisplay::viewKey() const
{
    QByteArray key;
    append(key, viewport->camera.view);
    append(key, viewport->camera.projection);
    append(key, viewport->frame.viewWidth);
    append(key, viewport->frame.viewHeight);
    if (const TankLoader* loader = TankLoader::instance()) {
        append(key, loader->tankRotation);
        append(key, loader->turretRotation);
        append(key, loader->gunRotation);
        key += loader->vehicleFilePath.toUtf8();
    }
    if (const TurretGunChooser* chooser = TurretGunChooser::instance())
        key += (chooser->currentTurretName + QLatin1Char('/') + chooser->currentGunName).toUtf8();
    if (const Physics* physics = Physics::instance())
        append(key, physics->shell);
    return key;
}

void WeakSpotDisplay::toggled(bool on)
{
    if (on) {
        restTimer.start();
        refresh();
    } else {
        restTimer.stop();
        hide();
    }
}

// A view that changed since the last look hides the map; one that stayed
// the same for a whole look, and isn't mapped yet, is mapped.
void WeakSpotDisplay::look()
{
    if (!active()) {
        hide();
        return;
    }
    const QByteArray key = viewKey();
    if (key != lastKey) {
        lastKey = key;
        if (key != startedKey)
            hide();
        return;
    }
    if (key != startedKey)
        refresh();
}

void WeakSpotDisplay::refresh()
{
    if (!active()) {
        hide();
        return;
    }
    TankLoader* loader = TankLoader::instance();
    // The plates stand where the last frame drew them; place them for
    // this view's rotations first.
    viewport->withContext([loader] { loader->placeCollisionModels(); });
    startedKey = lastKey = viewKey();
    const WeakSpotView view{viewport->camera.view, viewport->camera.projection,
                            QSize(viewport->frame.viewWidth, viewport->frame.viewHeight)};
    progress->setValue(0);
    progress->setVisible(true);
    job.start(*Physics::instance()->world(), Physics::instance()->shell, view,
              int(std::max(1u, std::thread::hardware_concurrency())));
}

void WeakSpotDisplay::show(const QImage& map)
{
    lastMap = map;
    progress->setVisible(false);
    if (!active())
        return;
    viewport->frame.scene.imageLayer.setImage(withLegend(map));
    viewport->update();
}

void WeakSpotDisplay::hide()
{
    job.cancel();
    startedKey.clear();
    progress->setVisible(false);
    if (viewport->frame.scene.imageLayer.image().isNull())
        return;
    viewport->frame.scene.imageLayer.setImage(QImage());
    viewport->update();
}

QImage WeakSpotDisplay::withLegend(const QImage& map)
{
    QImage image = map.convertToFormat(QImage::Format_ARGB32);
    QPainter painter(&image);
    const QRect bar(12, image.height() - 30, 160, 12);
    QLinearGradient gradient(bar.topLeft(), bar.topRight());
    gradient.setColorAt(0, QColor(255, 0, 0));
    gradient.setColorAt(0.5, QColor(255, 255, 0));
    gradient.setColorAt(1, QColor(0, 255, 0));
    painter.fillRect(bar.adjusted(-6, -24, 6, 20), QColor(0, 0, 0, 160));
    painter.fillRect(bar, gradient);
    painter.setPen(Qt::white);
    painter.drawText(QRect(bar.left(), bar.top() - 22, bar.width(), 20),
                     Qt::AlignLeft | Qt::AlignVCenter, tr("Chance to penetrate"));
    painter.drawText(QRect(bar.left(), bar.bottom() + 2, bar.width(), 16),
                     Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("0"));
    painter.drawText(QRect(bar.left(), bar.bottom() + 2, bar.width(), 16),
                     Qt::AlignRight | Qt::AlignVCenter, QStringLiteral("1"));
    return image;
}
