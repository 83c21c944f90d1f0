// A loadable module that is no plug-in.
extern "C" __attribute__((visibility("default"))) int something_else() { return 0; }
