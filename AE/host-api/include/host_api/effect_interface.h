// The host's effect interface: everything that passes between the host and an effect.
#pragma once

#include <host_api/constants.h>
#include <host_api/records.h>
#include <host_api/scalars.h>
#include <host_api/suites.h>
