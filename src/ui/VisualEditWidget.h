#pragma once

#include <QDialog>
#include <QString>

#include <memory>

class FindReplaceForm;
class QTextEdit;
class XmlHighlighter;
struct TankWindowSink;

namespace Ui {
class VisualEditWidget;
}

// The text of the shown vehicle's four visual files, one tab per part, with
// syntax colours and find and replace. A save writes the shown tab's text
// into the mod folder at the file's path in the game, where the next load of
// the vehicle finds it before the game's own.
class VisualEditWidget : public QDialog
{
    Q_OBJECT
public:
    explicit VisualEditWidget(QWidget* parent = nullptr);
    ~VisualEditWidget() override;

    // One highlighter on each editor's document; a second call does nothing.
    void createHighlighters();
    // Sends the loader's visual texts to the editors from now on.
    void connectVisualText(TankWindowSink& sink);
    // part: TankLoader::Part. Replaces the editor's text and its undo history.
    void setVisualText(int part, const QString& text);
    // The editor of a part, null for a part that does not exist.
    QTextEdit* textEdit(int part) const;

    std::unique_ptr<Ui::VisualEditWidget> ui;
    FindReplaceForm* findReplace;

public slots:
    void saveVisual();
    void findChassis();
    void findHull();
    void findGun();
    void findTurret();

private:
    void showFindReplace(QTextEdit* edit);
    // The .visual path of the shown tab's part in the present state; empty
    // when no vehicle is loaded or the state has no visual of it.
    QString shownVisualPath() const;
    bool writeVisual(const QString& target, const QString& path, const QString& text);
    void warn(const QString& boxText, const QString& logText);

    XmlHighlighter* highlighters[4] = {};
};
