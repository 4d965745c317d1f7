#pragma once

#include <QHash>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSet>
#include <QString>

class QAbstractItemView;
class QWidget;

// For scripts that use the real mouse: writes one line for each named part of a window, "name x y width
// height" in screen coordinates, whenever one of the application's windows has been shown or resized; the
// same for each row of a named item view, "name[row] x y width height", whenever it stands elsewhere, or the
// name alone when it has gone out of sight; and "preview loaded" after each load of the settings window's
// preview. Owned by the settings window.
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
    void reportRows(const QAbstractItemView *view);
    void append(const QString &line);

    QString m_path;
    QSet<QObject *> m_shown; // or resized, and not painted yet
    QHash<QString, QMap<int, QRect>> m_rows; // in sight, by the view's name
};
