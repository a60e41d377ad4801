// The module's exported C interface (being written).
extern "C" __attribute__((visibility("default"))) int get_version() { return 4538; }
