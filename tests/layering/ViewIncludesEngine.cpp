// A view must not see the engine adapter: this file is expected not to compile.
#include "webkit/WebKitEngine.h"
