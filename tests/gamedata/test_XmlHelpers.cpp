#include "MessageBoxRecorder.h"
#include "QtPrinters.h"
#include "XmlHelpers.h"

#include <QDomDocument>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <clocale>
#include <numeric>
#include <tuple>

namespace {
Matrix transformOf(const QString& xml)
{
    QDomDocument document;
    EXPECT_TRUE(document.setContent(xml));
    return parseTransform(document.documentElement());
}

// Switches LC_NUMERIC to a locale with a decimal comma while it lives,
// compiling one into a private folder when the system has none installed.
struct CommaLocale
{
    CommaLocale()
    {
        if (use())
            return;
        const QString localedef = QStandardPaths::findExecutable("localedef");
        if (localedef.isEmpty() ||
            QProcess::execute(localedef,
                              {"-i", "de_DE", "-f", "UTF-8", folder.filePath("de_DE.UTF-8")}) < 0)
            return;
        qputenv("LOCPATH", folder.path().toLocal8Bit());
        use();
    }
    ~CommaLocale()
    {
        std::setlocale(LC_NUMERIC, "C");
        qunsetenv("LOCPATH");
    }
    bool use()
    {
        active =
            std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && *std::localeconv()->decimal_point == ',';
        return active;
    }

    QTemporaryDir folder;
    bool active = false;
};
} // namespace

TEST(XmlHelpersTest, VectorsNeedEveryNumberOrReadAllZero)
{
    const std::pair<const char*, Vector3> cases[] = {
        {"1 2", {0, 0, 0}},
        {"1 2 3 4", {1, 2, 3}},
        {"wheels", {0, 0, 0}},
        {"", {0, 0, 0}},
        // A number cut short by a letter ends there; the next one must follow.
        {"1 2 3abc", {1, 2, 3}},
        {"1 2x 3", {0, 0, 0}},
        {"1,5 2 3", {0, 0, 0}},
        // Any white space separates.
        {"  1\t-2\r\n+3.5  ", {1, -2, 3.5f}},
        // What the packed reader writes for a float reads back to the same float.
        {"1.23457e+06 -1.1e-06 0", {1234570.0f, -0.0000011f, 0}}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(parseVector3(text), expected) << text;
    EXPECT_EQ(parseVector2("-0.5 4e2"), (Vector2{-0.5f, 400}));
    EXPECT_EQ(parseVector2("7"), (Vector2{0, 0}));
    EXPECT_EQ(parseVector4("1 2 3 .25"), (Vector4{1, 2, 3, 0.25f}));
    EXPECT_EQ(parseVector4("1 2 3"), (Vector4{0, 0, 0, 0}));
}

TEST(XmlHelpersTest, PointIsTheDecimalMarkWhateverTheProcessLocale)
{
    MessageBoxRecorder boxes;
    CommaLocale locale;
    if (!locale.active)
        GTEST_SKIP() << "no locale with a decimal comma could be set up";
    // The locale really is in force: the C library's own scan stops at the point.
    float probe = 0;
    std::sscanf("1.5", "%f", &probe);
    ASSERT_EQ(probe, 1.0f);
    EXPECT_EQ(parseVector3("1.5 -2.25 3e-1"), (Vector3{1.5f, -2.25f, 0.3f}));
    EXPECT_EQ(parseVector2("1,5 2"), (Vector2{0, 0}));
}

TEST(XmlHelpersTest, TransformTakesRowsAsTheyStandAndNegatesTranslationX)
{
    EXPECT_EQ(transformOf("<transform><row0>1 2 3</row0><row1> 4 5 6 </row1>"
                          "<row2>7 8 9</row2><row3>10 11 12</row3></transform>"),
              (Matrix{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, -10, 11, 12, 1}));
    // Only the first row of each name counts; a short row reads as zeros.
    EXPECT_EQ(transformOf("<t><row0>1 0 0</row0><row0>9 9 9</row0><row1>0 1</row1></t>"),
              (Matrix{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(parseTransform(QDomNode())[15], 1.0f);
}

TEST(XmlHelpersTest, MultiplyAppliesTheRightFactorFirst)
{
    // T x S scales first, so the translation stays 10; the order decides
    // where the translation goes.
    const Matrix translate{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 10, 0, 0, 1};
    const Matrix scale{2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    const Matrix turn{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const std::tuple<Matrix, Matrix, Matrix> cases[] = {
        {translate, scale, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 10, 0, 0, 1}},
        {scale, translate, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 20, 0, 0, 1}},
        {turn, translate, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 10, 0, 1}}};
    for (const auto& [left, right, product] : cases) {
        Matrix result = left;
        multiplyMatrix(result, right);
        EXPECT_EQ(result, product);
    }
    // Squaring in place reads the factors before it writes.
    Matrix a, copy;
    std::iota(a.begin(), a.end(), 1.0f);
    Matrix square = copy = a;
    multiplyMatrix(square, square);
    multiplyMatrix(a, copy);
    EXPECT_EQ(square, a);
}
