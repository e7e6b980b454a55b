#pragma once

#include "KeyedDockWidget.h"
#include "RayResult.h"

// The dock "Armor Inspector"; its controls stand in the main window's form.
// Shift+C shows or hides it. It prints each shot of the ray world into its
// field armorResultsText.
class ArmorWidget : public KeyedDockWidget
{
    Q_OBJECT
public:
    explicit ArmorWidget(QWidget* parent = nullptr);

public slots:
    void armorHitResult(RayResultsList results);
};
