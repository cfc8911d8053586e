/* The dump of a parsed document. */
#ifndef VX_DIAG_TREE_DUMP_H
#define VX_DIAG_TREE_DUMP_H

#include <BQ/BQBase.h>

namespace vx {

/* Prints every child of `tree`, and what is below, at `depth` + 1. */
void dumpXMLTree(const BQTree* tree, int depth);

/* Prints one child and what is below; `context` is the level as an integer. */
void _describeChild(const void* child, void* context);

}  // namespace vx

#endif
