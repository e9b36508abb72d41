#pragma once

// What the check of the arrows has to see: the lowest folder includes a higher one.
#include "engine/model/IxoFile.h"
