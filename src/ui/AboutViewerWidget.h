#pragma once

#include <QDialog>
#include <QStringList>

#include <memory>

namespace Ui {
class AboutViewerWidget;
}

// What the OpenGL driver of a context says about itself.
struct GlDriverFacts
{
    QString vendor;
    QString renderer;
    QString version;
    QString shadingLanguage;
    QStringList extensions;
};

// The facts of the context current on this thread; all empty when there is
// none. Extensions are read one by one, the only way a core profile allows.
GlDriverFacts currentGlDriverFacts();

// The "About" box: program and game versions, the translators, the licence
// and what the OpenGL driver reports. Reads the GL context current when it is
// made, which the caller makes the viewport's.
class AboutViewerWidget : public QDialog
{
    Q_OBJECT
public:
    explicit AboutViewerWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~AboutViewerWidget() override;

    std::unique_ptr<Ui::AboutViewerWidget> ui;

private:
    void fillDetails();
    void fillTranslations();
    void fillLicense();
    void fillOpenGl();
};
