#pragma once

#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

class QWidget;

// For scripts that use the real mouse: writes one line for each named part of a window, "name x y width
// height" in screen coordinates, whenever one of the application's windows has been shown, and "preview
// loaded" after each load of the settings window's preview. Owned by the settings window.
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
    void reportParts(const QWidget *window);
    void append(const QString &line);

    QString m_path;
    QSet<QObject *> m_shown; // and not painted yet
};
