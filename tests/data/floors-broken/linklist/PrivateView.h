#pragma once

#include "linklist/LinkListModel.h"
#include "linklist/Newcomer.h"

#include <QWidget>
