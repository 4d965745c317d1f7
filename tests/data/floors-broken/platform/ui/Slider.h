#pragma once

#include "linklist/LinkListModel.h"

#include <QSlider>
