#include "base/utf8_text.h"
