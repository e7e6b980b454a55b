#pragma once

#include <QDialog>
#include <QPointer>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>

#include <memory>

namespace Ui {
class FindReplaceForm;
}

// Finds and replaces text in one editor at a time, by plain text or by a
// regular expression, forwards or backwards. Replace works on the editor's
// selection, so a replacement always follows a find.
class FindReplaceForm : public QDialog
{
    Q_OBJECT
public:
    explicit FindReplaceForm(QWidget* parent = nullptr);
    ~FindReplaceForm() override;

    // The editor the form works on from now on.
    void setTextEdit(QTextEdit* edit);
    QTextEdit* textEdit() const { return editor; }

    std::unique_ptr<Ui::FindReplaceForm> ui;

public slots:
    void find(bool down);
    void find();
    void findNext();
    void findPrev();
    void replace();
    void replaceAll();

private slots:
    void textToFindChanged();
    void validateRegExp(QString text);
    void regexpSelected(bool sel);

private:
    QTextDocument::FindFlags findFlags(bool down) const;
    bool findRegularExpression(QTextDocument::FindFlags flags);
    // Puts the replacement over the editor's selection and leaves the cursor
    // where a search in the set direction goes on, so that a replacement
    // that contains the searched text is not found again.
    void replaceSelection();
    void showError(const QString& text);
    void showMessage(const QString& text);

    QTextCursor textCursor;
    QPointer<QTextEdit> editor;
};
