#pragma once

// The whole property tree in one include.
#include "foundations/property/AbstractProperty.h"
#include "foundations/property/ErrorResult.h"
#include "foundations/property/Extensions.h"
#include "foundations/property/Metadata.h"
#include "foundations/property/PropertyHandle.h"
#include "foundations/property/PropertyObject.h"
#include "foundations/property/PropertyObjectFactory.h"
#include "foundations/property/PropertyPath.h"
#include "foundations/property/PropertyReference.h"
#include "foundations/property/SimpleProperty.h"
