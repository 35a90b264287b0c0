// Visibility of the core library's symbols: everything is hidden unless marked.
#pragma once

#define ZORVAN_CORE_API __attribute__((visibility("default")))
