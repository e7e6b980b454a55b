#include "ArmorWidget.h"

#include "ArmorReport.h"
#include "Physics.h"

#include <QPlainTextEdit>

ArmorWidget::ArmorWidget(QWidget* parent) : KeyedDockWidget(Qt::Key_C, false, parent)
{
    qRegisterMetaType<RayResultsList>("RayResultsList");
    if (Physics* physics = Physics::instance())
        connect(physics, &Physics::rayHit, this, &ArmorWidget::armorHitResult);
}

void ArmorWidget::armorHitResult(RayResultsList results)
{
    // The field is part of the window's form, which fills this dock only
    // after the dock itself exists: looked up at each shot.
    auto* field = findChild<QPlainTextEdit*>(QStringLiteral("armorResultsText"));
    if (!field)
        return;
    field->clear();
    if (!results.isEmpty())
        field->appendHtml(ArmorReport::html(results));
}
