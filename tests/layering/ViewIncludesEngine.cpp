// A view must not see the engine adapter: this file is expected not to compile.
#include "web/webkit/WebKitEngine.h"
