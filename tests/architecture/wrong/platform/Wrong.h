#pragma once

// The check of the arrows has to find this: the lowest folder includes a higher one.
#include "engine/model/IxoFile.h"
