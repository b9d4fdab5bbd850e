#pragma once

/// All of the variant library: values, their payloads, and what acts on them.

#include "foundations/variant/ArrayDimensionsView.h"
#include "foundations/variant/ArrayIndexing.h"
#include "foundations/variant/ArraySlice.h"
#include "foundations/variant/BVariant.h"
#include "foundations/variant/HeapVariantData.h"
#include "foundations/variant/IVariantData.h"
#include "foundations/variant/RunTimePayload.h"
#include "foundations/variant/VariantOperations.h"
#include "foundations/variant/VariantPayloads.h"
#include "foundations/variant/WellKnownType.h"
