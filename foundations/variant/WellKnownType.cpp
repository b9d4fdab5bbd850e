#include "foundations/variant/WellKnownType.h"
