#pragma once

#include <QObject>
#include <QString>

class QWidget;

// For scripts that use the real mouse: writes one line for each named part of a window, "name x y width
// height" in screen coordinates, once the window is shown, and "preview loaded" after each load of its
// preview. Owned by the window.
class GeometryReport : public QObject
{
    Q_OBJECT

public:
    GeometryReport(QWidget *window, const QString &path);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private Q_SLOTS:
    void reportPreview();

private:
    void reportParts();
    void append(const QString &line);

    QWidget *m_window;
    QString m_path;
    bool m_isWritten = false;
};
