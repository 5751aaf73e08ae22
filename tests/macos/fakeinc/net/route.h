#pragma once

#define RTM_IFINFO 0xe
