#include "solve/rows/number_format.h"

#include <gtest/gtest.h>
