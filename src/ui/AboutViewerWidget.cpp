#include "AboutViewerWidget.h"

#include "ui_AboutViewerWidget.h"

#include "Constants.h"
#include "Environment.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QPushButton>

#ifndef GL_NUM_EXTENSIONS
#define GL_NUM_EXTENSIONS 0x821D
#endif

namespace {
const char SiteAddress[] = "https://ferrox.example.org";

void showLink(QLabel* label, const QString& address, const QString& text)
{
    label->setTextFormat(Qt::RichText);
    label->setText(QStringLiteral("<a href=\"") + address + QStringLiteral("\">") + text +
                   QStringLiteral("</a>"));
    label->setTextInteractionFlags(Qt::TextBrowserInteraction);
    label->setOpenExternalLinks(true);
}

QString glText(QOpenGLFunctions& gl, GLenum name)
{
    return QString::fromLatin1(reinterpret_cast<const char*>(gl.glGetString(name)));
}
} // namespace

GlDriverFacts currentGlDriverFacts()
{
    GlDriverFacts facts;
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context)
        return facts;

    QOpenGLExtraFunctions& gl = *context->extraFunctions();
    facts.vendor = glText(gl, GL_VENDOR);
    facts.renderer = glText(gl, GL_RENDERER);
    facts.version = glText(gl, GL_VERSION);
    facts.shadingLanguage = glText(gl, GL_SHADING_LANGUAGE_VERSION);
    // A core profile has no single extension string: glGetString would fail.
    GLint count = 0;
    gl.glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i)
        facts.extensions.append(
            QString::fromLatin1(reinterpret_cast<const char*>(gl.glGetStringi(GL_EXTENSIONS, i))));
    return facts;
}

AboutViewerWidget::AboutViewerWidget(QWidget* parent, Qt::WindowFlags flags)
    : QDialog(parent, flags), ui(std::make_unique<Ui::AboutViewerWidget>())
{
    ui->setupUi(this);
    ui->buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Ok"));
    fillDetails();
    fillTranslations();
    fillLicense();
    fillOpenGl();
}

AboutViewerWidget::~AboutViewerWidget() = default;

void AboutViewerWidget::fillDetails()
{
    ui->gavrelVersionLabel->setText(gameVersionString());
    ui->versionLabel->setText(QLatin1String(Ferrox::ApplicationVersion));
    ui->buildLabel->setText(architectureName());
    showLink(ui->urlLabel, QLatin1String(SiteAddress), tr("Open in browser"));
}

void AboutViewerWidget::fillTranslations()
{
    // The Russian catalogue is the team's own work; the other two wait for
    // someone who speaks the language.
    showLink(ui->russianLabel, QLatin1String(SiteAddress), tr("Ferrox team"));
    ui->malayLabel->setText(tr("No translation yet"));
    ui->portugueseLabel->setText(tr("No translation yet"));
}

void AboutViewerWidget::fillLicense()
{
    ui->licenseBrowser->setOpenExternalLinks(true);
    ui->licenseBrowser->setHtml(
        tr("<p><b>Ferrox %1</b><br>Copyright &copy; the Ferrox team.</p>"
           "<p>Ferrox is free software. You may use it, copy it, change it and pass it on, "
           "alone or with your own work, provided this notice stays with every copy.</p>"
           "<p>Ferrox comes without any warranty. Its makers are not liable for any harm that "
           "comes from using it.</p>"
           "<p>Ferrox reads a Gavrel installation and never changes it. The game, its models, "
           "textures and texts belong to their owners; Ferrox is made by modders for modders "
           "and is not connected with the makers of the game.</p>")
            .arg(QLatin1String(Ferrox::ApplicationVersion)));
}

void AboutViewerWidget::fillOpenGl()
{
    const GlDriverFacts facts = currentGlDriverFacts();
    ui->glVendorLabel->setText(facts.vendor);
    ui->glRendererLabel->setText(facts.renderer);
    ui->glVersionLabel->setText(facts.version);
    ui->glslLabel->setText(facts.shadingLanguage);
    QString extensions;
    for (const QString& extension : facts.extensions)
        extensions += extension + QLatin1Char('\n');
    ui->extensionsTextEdit->setPlainText(extensions);
}
