#include "restoration/planes/Plane.h"
