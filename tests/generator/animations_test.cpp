#include "points.h"
