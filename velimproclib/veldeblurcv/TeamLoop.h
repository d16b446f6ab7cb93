#pragma once

#include "velimproclib/primitives/TeamLoop.h"
