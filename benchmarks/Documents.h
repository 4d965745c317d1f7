#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include "linklist/LinkListDocument.h"

// Settings documents of any size, made from the one that a new workspace begins with.
namespace Documents
{

// That many links. Every fifth title holds characters that XML or a script must escape, every fifth one
// letters beyond ASCII; every second address has a query.
QList<LinkItem> links(qint64 count);

// The starting document with these links in place of its own.
QByteArray withLinks(const QList<LinkItem> &links);

// Its configuration text.
QByteArray configurationOf(QByteArrayView document);

// The folder of the bundle's resources in the sources.
QString resources();

} // namespace Documents
