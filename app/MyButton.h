#pragma once
#include <QPixmap>
#include <QPushButton>

// A picture button that fires as soon as any mouse button goes down. A toggling
// button (pause/resume) swaps its picture on every press.
class MyButton : public QPushButton {
    Q_OBJECT
public:
    explicit MyButton(bool kind, QWidget* parent = nullptr);

    // Of a toggling button: true shows the first picture, false the second.
    bool toggleFlag = true;

    // The picture that the next paint draws.
    const QPixmap& currentPixmap(bool hover) const;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap firstPixmap;
    QPixmap firstHoverPixmap;
    QPixmap secondPixmap;
    QPixmap secondHoverPixmap;
    bool kind;
};
