#include "json/json.h"
