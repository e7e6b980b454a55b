#include "ShellChoice.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSignalBlocker>
#include <QSpinBox>

namespace {

QString tooltipOf(const Shell& shell)
{
    const auto number = [](float value) { return QString::number(value, 'g', 6); };
    return ShellChoice::tr("%1, %2 mm; penetration %3 mm at 100 m, %4 mm at 500 m")
        .arg(shell.kind, number(shell.calibre), number(shell.piercingPower100),
             number(shell.piercingPower500));
}

} // namespace

ShellChoice::ShellChoice(const Controls& controls, QObject* parent) : QObject(parent), ui(controls)
{
    setShells({});
    connect(ui.shellBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ShellChoice::pick);
    connect(ui.distanceBox, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &ShellChoice::changed);
    connect(ui.penetrationBox, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &ShellChoice::changed);
}

void ShellChoice::setShells(const QVector<Shell>& list)
{
    const Shell* before = chosen();
    const bool wasCustom = !before && ui.shellBox->count() > 0;
    const QString beforeTag = before ? before->tag : QString();
    shells = list;
    int index = shells.isEmpty() || wasCustom ? int(shells.size()) : 0;
    {
        const QSignalBlocker blocker(ui.shellBox);
        ui.shellBox->clear();
        for (int i = 0; i < shells.size(); ++i) {
            ui.shellBox->addItem(shells[i].name);
            ui.shellBox->setItemData(i, tooltipOf(shells[i]), Qt::ToolTipRole);
            if (shells[i].tag == beforeTag)
                index = i;
        }
        ui.shellBox->addItem(tr("Custom"));
        ui.shellBox->setCurrentIndex(index);
    }
    pick(index);
}

const Shell* ShellChoice::chosen() const
{
    const int index = ui.shellBox->currentIndex();
    return index >= 0 && index < shells.size() ? &shells[index] : nullptr;
}

void ShellChoice::pick(int)
{
    const Shell* shell = chosen();
    ui.penetrationBox->setEnabled(!shell);
    if (shell) {
        // The type box resets the normalisation box, so it goes first.
        ui.typeBox->setCurrentIndex(shell->shellType());
        ui.calibreBox->setValue(shell->calibre);
        ui.normalizationBox->setValue(shell->normalization());
    }
    emit changed();
}

void ShellChoice::complete(ShellParamaters& shell) const
{
    if (const Shell* game = chosen()) {
        shell.penetration = game->penetrationAt(float(ui.distanceBox->value()));
        shell.lossPerDecimetre = game->lossFactorByDistance;
    } else {
        shell.penetration = float(ui.penetrationBox->value());
        shell.lossPerDecimetre = 0;
    }
}
