#include "core/records/codec.h"
