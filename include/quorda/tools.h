// Query helpers and the text export and import of whole datasets.
#pragma once

#include "quorda/tools/query_helpers.h"
#include "quorda/tools/text_transfer.h"
