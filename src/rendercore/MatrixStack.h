#pragma once

#include "Maths.h"
#include "Singleton.h"

#include <QObject>

// The matrices of the frame, read by every drawable object.
class MatrixStack : public QObject, public Singleton<MatrixStack>
{
    Q_OBJECT
public:
    explicit MatrixStack(QObject* parent = nullptr);

    // Copies view and derives normalMatrix (inverse transpose of its upper 3 x 3).
    void setView(const Matrix& newView);

    Matrix projection;
    Matrix view;
    Matrix depthProjection;
    Matrix depthView;
    Matrix3 normalMatrix;
    // Maps clip space to texture space: scale 0.5 and offset 0.5 on x, y, z.
    Matrix depthBias;
};
