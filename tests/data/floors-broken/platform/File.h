#pragma once

#include <QString>
#include <QtCore/QObject>
#include <qglobal.h>
#include <vector>
