#include "app/OvelWebApp.h"

int main(int argc, char** argv) {
    ovel::OvelWebApp app;
    return app.run(argc, argv);
}
