// The core must not see the views: this file is expected not to compile.
#include "chrome/WebContainer.h"
