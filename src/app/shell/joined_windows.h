#pragma once

#include <QPointer>
#include <QRect>
#include <QWidget>
#include <vector>

namespace tembrix {

// One top-level window with the windows of a project as its panes, for displays on which a program
// cannot place its windows. A pane keeps its name, its title and its keys. One of the panes is
// current, as one of several windows would be active: the one that has the keyboard focus, or had
// it last. A press of the mouse on a pane makes it current.
class JoinedWindows final : public QWidget {
    Q_OBJECT

  public:
    JoinedWindows();

    // Whether this display places all windows itself.
    static bool areNeeded();

    void setName(const QString& name);
    // Each pane has a header with its window title.
    void add(QWidget* pane);
    // Before show(): where the pane would be on the screen as a window. Panes with the same upper
    // edge share a row, and all keep their proportions.
    void setFrame(QWidget* pane, const QRect& frame);
    // Ends the sheets, which may use the content of any pane, and hides the window, because the
    // panes close together. The window is deleted with its last pane.
    void remove(QWidget* pane);
    bool isClosing() const { return closing_; }

    void present();
    QWidget* current() const;
    void makeCurrent(QWidget* pane);

  Q_SIGNALS:
    void currentChanged();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    struct Pane {
        QWidget* box;  // the header and the widget
        QWidget* widget;
        QRect frame;
    };

    void arrange();
    QWidget* paneAt(const QWidget* widget) const;
    void followFocus(const QWidget* focused);

    std::vector<Pane> panes_;
    QPointer<QWidget> current_;
    bool arranged_ = false;
    bool closing_ = false;
};

// These treat a pane of joined windows like a window of its own.
bool hasKeyboard(const QWidget& window);
void bringForward(QWidget& window);

}  // namespace tembrix
