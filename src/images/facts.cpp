#include "images/facts.h"
