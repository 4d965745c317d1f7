#pragma once

#include <QColor>
#include <QtGui/QColor>
#include <qcolor.h>
