// The arrays that are made of the tables, sorted by label without version, and by symbol.
#pragma once

#include <cstddef>

#include "registers/registers.h"

extern const RegisterEntry register_elements[];
extern const size_t register_elements_count;
extern const RegisterEntry register_groups[];
extern const size_t register_groups_count;
extern const RegisterEntry register_labels[];
extern const size_t register_labels_count;
extern const RegisterType register_types[];
extern const size_t register_types_count;
