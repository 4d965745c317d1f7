#pragma once

#include "platform/File.h"

#include <QAbstractTableModel>
#include <QWebEngineView>
#include <QWidget>
