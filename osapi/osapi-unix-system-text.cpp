// The system's own texts are UTF-8 already.
#include <osapi/system_text.h>

namespace OSAPI {

String system_text(String utf8) { return utf8; }

}  // namespace OSAPI
