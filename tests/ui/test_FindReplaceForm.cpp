// The find and replace form on a real editor, driven through its controls.

#include "FindReplaceForm.h"

#include "QtPrinters.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTextEdit>

#include <gtest/gtest.h>

namespace {

struct Options
{
    bool caseSensitive = false;
    bool wholeWords = false;
    bool regularExpression = false;
    bool up = false;
};

class FindReplaceFormTest : public testing::Test
{
protected:
    void SetUp() override
    {
        form.setTextEdit(&edit);
        form.show();
    }

    void prepare(const QString& text, const QString& find, const Options& options, int caret = 0)
    {
        edit.setPlainText(text);
        QTextCursor cursor = edit.textCursor();
        cursor.setPosition(caret);
        edit.setTextCursor(cursor);
        control<QCheckBox>("caseCheckBox")->setChecked(options.caseSensitive);
        control<QCheckBox>("wholeCheckBox")->setChecked(options.wholeWords);
        control<QCheckBox>("regexCheckBox")->setChecked(options.regularExpression);
        (options.up ? control<QRadioButton>("upRadioButton")
                    : control<QRadioButton>("downRadioButton"))
            ->setChecked(true);
        control<QLineEdit>("textToFind")->clear();
        QTest::keyClicks(control<QLineEdit>("textToFind"), find);
    }
    void click(QPushButton* button)
    {
        ASSERT_TRUE(button->isEnabled()) << button->objectName().toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }
    QString label() const { return control<QLabel>("errorLabel")->text(); }
    // The form's controls by their object names, which the window's
    // translations and layouts rely on.
    template <typename T> T* control(const char* name) const
    {
        T* found = form.findChild<T*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    QTextEdit edit;
    FindReplaceForm form;
};

struct FindCase
{
    const char* what;
    QString find;
    Options options;
    int caret;
    // Where each successive find selects; the last search misses.
    QList<int> starts;
};

const QString FindText = QStringLiteral("Tank tank TANK tanks\nnode tank");

const FindCase findCases[] = {
    {"plain text, any case", "tank", {}, 0, {0, 5, 10, 15, 26}},
    {"case sensitive whole words", "tank", {true, true}, 0, {5, 26}},
    {"regular expression", "t[a-z]+k", {true, false, true}, 0, {5, 15, 26}},
    {"regular expression, whole words, any case", "t.nk", {false, true, true}, 0, {0, 5, 10, 26}},
    {"upwards from the end", "tank", {false, true, false, true}, 30, {26, 10, 5, 0}},
    {"regular expression upwards", "T\\w+", {true, false, true, true}, 30, {10, 0}},
};

TEST_F(FindReplaceFormTest, SuccessiveFindsSelectEachMatchThenStartOver)
{
    for (const FindCase& c : findCases) {
        SCOPED_TRACE(c.what);
        prepare(FindText, c.find, c.options, c.caret);
        for (int start : c.starts) {
            click(control<QPushButton>("findButton"));
            EXPECT_EQ(edit.textCursor().selectionStart(), start);
            if (!c.options.regularExpression) {
                EXPECT_EQ(edit.textCursor().selectedText(), FindText.mid(start, c.find.size()));
            }
            EXPECT_EQ(label(), QString());
            // Replacing needs a selection, which the editor reports.
            EXPECT_TRUE(control<QPushButton>("replaceButton")->isEnabled());
        }
        click(control<QPushButton>("findButton"));
        EXPECT_TRUE(label().contains("no match found"));
        EXPECT_TRUE(label().contains("color:#ff0000"));
        EXPECT_FALSE(edit.textCursor().hasSelection());
        EXPECT_EQ(edit.textCursor().position(), 0);
        EXPECT_FALSE(control<QPushButton>("replaceAllButton")->isEnabled());
    }
}

struct ReplaceAllCase
{
    const char* what;
    QString text;
    QString find;
    QString replacement;
    Options options;
    int caret;
    QString result;
    int count;
};

const ReplaceAllCase replaceAllCases[] = {
    // clang-format off
    {"regular expression", "a1 b22 c333", "\\d+", "#", {false, false, true}, 0, "a# b# c#", 3},
    {"whole words", "cat catalog Cat", "cat", "dog", {false, true}, 0, "dog catalog dog", 2},
    {"replacement holding the searched text", "ab ab", "ab", "abab", {}, 0, "abab abab", 2},
    {"upwards, replacement holding the text", "x x x", "x", "xx", {true, false, false, true}, 5,
     "xx xx xx", 3},
    {"from the first find to the top", "a a a a", "a", "b", {false, false, false, true}, 3,
     "b b a a", 2},
    {"from the first find to the end", "a a a a", "a", "b", {}, 3, "a a b b", 2},
    // clang-format on
};

TEST_F(FindReplaceFormTest, ReplaceAllGoesFromTheFirstFindToTheEndOfTheDirection)
{
    for (const ReplaceAllCase& c : replaceAllCases) {
        SCOPED_TRACE(c.what);
        prepare(c.text, c.find, c.options, c.caret);
        QTest::keyClicks(control<QLineEdit>("textToReplace"), c.replacement);
        click(control<QPushButton>("findButton"));
        click(control<QPushButton>("replaceAllButton"));
        EXPECT_EQ(edit.toPlainText(), c.result);
        EXPECT_EQ(label(), QString("<span style=\" font-weight:600; color:green;\">Replaced %1 "
                                   "occurrence(s)</spam>")
                               .arg(c.count));
        control<QLineEdit>("textToReplace")->clear();
    }
}

TEST_F(FindReplaceFormTest, ReplaceAllWithoutASelectionReplacesNothing)
{
    prepare("a a", "a", {});
    form.replaceAll();
    EXPECT_EQ(edit.toPlainText(), "a a");
    EXPECT_TRUE(label().contains("Replaced 0 occurrence(s)"));
}

TEST_F(FindReplaceFormTest, ReplaceChangesTheSelectionAndFindsTheNext)
{
    prepare("one two one", "one", {true, true});
    QTest::keyClicks(control<QLineEdit>("textToReplace"), "1");
    click(control<QPushButton>("findButton"));
    click(control<QPushButton>("replaceButton"));
    EXPECT_EQ(edit.toPlainText(), "1 two one");
    EXPECT_EQ(edit.textCursor().selectionStart(), 6);
    EXPECT_EQ(edit.textCursor().selectedText(), "one");
}

TEST_F(FindReplaceFormTest, AnInvalidExpressionShowsItsErrorUntilTheBoxIsCleared)
{
    EXPECT_FALSE(control<QPushButton>("findButton")->isEnabled());
    prepare("text", "(a", {false, false, true});
    EXPECT_TRUE(control<QPushButton>("findButton")->isEnabled());
    EXPECT_TRUE(label().startsWith("<span style=\" font-weight:600; color:#ff0000;\">"));
    EXPECT_TRUE(label().contains(QRegularExpression("(a").errorString()));

    control<QCheckBox>("regexCheckBox")->setChecked(false);
    EXPECT_EQ(label(), QString());
    control<QCheckBox>("regexCheckBox")->setChecked(true);
    EXPECT_FALSE(label().isEmpty());
    QTest::keyClick(control<QLineEdit>("textToFind"), Qt::Key_End);
    QTest::keyClicks(control<QLineEdit>("textToFind"), ")");
    EXPECT_EQ(label(), QString());
    QTest::keyClick(control<QLineEdit>("textToFind"), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(control<QLineEdit>("textToFind"), Qt::Key_Delete);
    EXPECT_FALSE(control<QPushButton>("findButton")->isEnabled());
}

// Switching editors leaves the buttons following only the new one.
TEST_F(FindReplaceFormTest, TheFormFollowsOnlyItsPresentEditor)
{
    QTextEdit other;
    other.setPlainText("word");
    prepare("word", "word", {});
    edit.selectAll();
    form.setTextEdit(&other);
    EXPECT_FALSE(control<QPushButton>("replaceButton")->isEnabled());
    edit.setTextCursor(QTextCursor(edit.document()));
    edit.selectAll();
    EXPECT_FALSE(control<QPushButton>("replaceButton")->isEnabled());

    click(control<QPushButton>("findButton"));
    EXPECT_EQ(other.textCursor().selectedText(), "word");
    EXPECT_TRUE(control<QPushButton>("replaceButton")->isEnabled());
    EXPECT_EQ(edit.textCursor().selectedText(), "word");
}

} // namespace
