#include "FindReplaceForm.h"

#include "ui_FindReplaceForm.h"

#include <QRegularExpression>
#include <QTextEdit>

namespace {
QRegularExpression::PatternOptions caseOption(bool caseSensitive)
{
    return caseSensitive ? QRegularExpression::NoPatternOption
                         : QRegularExpression::CaseInsensitiveOption;
}
} // namespace

FindReplaceForm::FindReplaceForm(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::FindReplaceForm>())
{
    ui->setupUi(this);
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint);
}

FindReplaceForm::~FindReplaceForm() = default;

void FindReplaceForm::setTextEdit(QTextEdit* edit)
{
    if (editor) {
        disconnect(editor, nullptr, ui->replaceButton, nullptr);
        disconnect(editor, nullptr, ui->replaceAllButton, nullptr);
    }
    editor = edit;
    textCursor = edit ? edit->textCursor() : QTextCursor();
    const bool selected = edit && edit->textCursor().hasSelection();
    ui->replaceButton->setEnabled(selected);
    ui->replaceAllButton->setEnabled(selected);
    if (!edit)
        return;
    connect(edit, SIGNAL(copyAvailable(bool)), ui->replaceButton, SLOT(setEnabled(bool)));
    connect(edit, SIGNAL(copyAvailable(bool)), ui->replaceAllButton, SLOT(setEnabled(bool)));
}

void FindReplaceForm::find()
{
    find(ui->downRadioButton->isChecked());
}

void FindReplaceForm::findNext()
{
    find(true);
}

void FindReplaceForm::findPrev()
{
    find(false);
}

void FindReplaceForm::find(bool down)
{
    if (!editor)
        return;
    const QTextDocument::FindFlags flags = findFlags(down);
    const bool found = ui->regexCheckBox->isChecked() ? findRegularExpression(flags)
                                                      : editor->find(ui->textToFind->text(), flags);
    if (found) {
        showError(QString());
        return;
    }
    showError(tr("no match found"));
    // The next search starts over from the top.
    textCursor = editor->textCursor();
    textCursor.setPosition(0);
    editor->setTextCursor(textCursor);
}

QTextDocument::FindFlags FindReplaceForm::findFlags(bool down) const
{
    QTextDocument::FindFlags flags;
    if (!down)
        flags |= QTextDocument::FindBackward;
    if (ui->caseCheckBox->isChecked())
        flags |= QTextDocument::FindCaseSensitively;
    if (ui->wholeCheckBox->isChecked())
        flags |= QTextDocument::FindWholeWords;
    return flags;
}

bool FindReplaceForm::findRegularExpression(QTextDocument::FindFlags flags)
{
    const QRegularExpression expression(ui->textToFind->text(),
                                        caseOption(ui->caseCheckBox->isChecked()));
    if (!expression.isValid())
        return false;
    // The search goes on from wherever the user left the caret.
    textCursor = editor->document()->find(expression, editor->textCursor(), flags);
    if (textCursor.isNull())
        return false;
    editor->setTextCursor(textCursor);
    return true;
}

void FindReplaceForm::replace()
{
    if (!editor)
        return;
    if (editor->textCursor().hasSelection())
        replaceSelection();
    find();
}

void FindReplaceForm::replaceAll()
{
    if (!editor)
        return;
    int count = 0;
    while (editor->textCursor().hasSelection()) {
        replaceSelection();
        find();
        ++count;
    }
    showMessage(tr("Replaced %n occurrence(s)", nullptr, count));
}

void FindReplaceForm::replaceSelection()
{
    QTextCursor cursor = editor->textCursor();
    const int start = cursor.selectionStart();
    cursor.insertText(ui->textToReplace->text());
    if (ui->upRadioButton->isChecked())
        cursor.setPosition(start);
    editor->setTextCursor(cursor);
}

void FindReplaceForm::textToFindChanged()
{
    ui->findButton->setEnabled(!ui->textToFind->text().isEmpty());
}

void FindReplaceForm::validateRegExp(QString text)
{
    if (!ui->regexCheckBox->isChecked() || text.isEmpty()) {
        showError(QString());
        return;
    }
    const QRegularExpression expression(text, caseOption(ui->caseCheckBox->isChecked()));
    showError(expression.isValid() ? QString() : expression.errorString());
}

void FindReplaceForm::regexpSelected(bool sel)
{
    validateRegExp(sel ? ui->textToFind->text() : QString());
}

void FindReplaceForm::showError(const QString& text)
{
    ui->errorLabel->setText(
        text.isEmpty() ? QString()
                       : QStringLiteral("<span style=\" font-weight:600; color:#ff0000;\">") +
                             text + QStringLiteral("</spam>"));
}

void FindReplaceForm::showMessage(const QString& text)
{
    ui->errorLabel->setText(
        text.isEmpty() ? QString()
                       : QStringLiteral("<span style=\" font-weight:600; color:green;\">") + text +
                             QStringLiteral("</spam>"));
}
