// The About box's facts against the GL context current when it opens.

#include "AboutViewerWidget.h"
#include "GlTestContext.h"
#include "QtPrinters.h"

#include <QLabel>
#include <QOpenGLExtraFunctions>
#include <QPlainTextEdit>

#include <gtest/gtest.h>

namespace {
QString labelText(const AboutViewerWidget& about, const char* name)
{
    const auto* label = about.findChild<QLabel*>(QLatin1String(name));
    return label ? label->text() : QStringLiteral("<no label %1>").arg(QLatin1String(name));
}

QString glText(QOpenGLFunctions& gl, GLenum name)
{
    return QString::fromLatin1(reinterpret_cast<const char*>(gl.glGetString(name)));
}
} // namespace

TEST(AboutViewerWidgetTest, ShowsTheCurrentContextsDriverFacts)
{
    GlTestContext context;
    ASSERT_TRUE(context.valid);
    QOpenGLExtraFunctions& gl = *context.context.extraFunctions();
    while (gl.glGetError() != GL_NO_ERROR) {
    }

    const AboutViewerWidget about;
    // The old single extension string is an error in a core profile.
    EXPECT_EQ(gl.glGetError(), GLenum(GL_NO_ERROR));

    EXPECT_EQ(labelText(about, "glVendorLabel"), glText(gl, GL_VENDOR));
    EXPECT_EQ(labelText(about, "glRendererLabel"), glText(gl, GL_RENDERER));
    EXPECT_EQ(labelText(about, "glVersionLabel"), glText(gl, GL_VERSION));
    EXPECT_EQ(labelText(about, "glslLabel"), glText(gl, GL_SHADING_LANGUAGE_VERSION));

    GLint count = 0;
    gl.glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    ASSERT_GT(count, 0);
    const QString shown =
        about.findChild<QPlainTextEdit*>(QStringLiteral("extensionsTextEdit"))->toPlainText();
    EXPECT_TRUE(shown.endsWith(QLatin1Char('\n')));
    const QStringList lines = shown.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), count);
    EXPECT_EQ(lines.first(), QString::fromLatin1(
                                 reinterpret_cast<const char*>(gl.glGetStringi(GL_EXTENSIONS, 0))));
    EXPECT_EQ(lines.last(), QString::fromLatin1(reinterpret_cast<const char*>(
                                gl.glGetStringi(GL_EXTENSIONS, GLuint(count - 1)))));

    EXPECT_EQ(labelText(about, "versionLabel"), QStringLiteral("1.0.17"));
    EXPECT_EQ(labelText(about, "buildLabel"), QStringLiteral("x64"));
    // No settings: no game to ask.
    EXPECT_EQ(labelText(about, "gavrelVersionLabel"), QStringLiteral("Gavrel not found"));
    EXPECT_TRUE(labelText(about, "russianLabel").contains(QStringLiteral(">Ferrox team</a>")));
}

TEST(AboutViewerWidgetTest, WithoutAContextTheDriverFactsStayEmpty)
{
    ASSERT_EQ(QOpenGLContext::currentContext(), nullptr);
    const AboutViewerWidget about;
    EXPECT_EQ(labelText(about, "glVendorLabel"), QString());
    EXPECT_EQ(about.findChild<QPlainTextEdit*>(QStringLiteral("extensionsTextEdit"))->toPlainText(),
              QString());
}
