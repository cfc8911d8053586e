/*
 * The tree of a parsed document. Each position carries a node. All positions, nodes and strings of
 * a document share their memory: a reference to any of them keeps all of them alive.
 */
#ifndef BQ_TREE_H
#define BQ_TREE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The identifier of the tree class. Positions compare by identity. */
BQ_EXPORT BQTypeID BQTreeGetTypeID(void);

/** The node of a position, borrowed; null for null. */
BQ_EXPORT const BQXMLNode* BQXMLTreeGetNode(const BQTree* tree);

/** The first child, borrowed; null if there is none. */
BQ_EXPORT const BQTree* BQTreeGetFirstChild(const BQTree* tree);

/** The next child of the same parent, borrowed; null if there is none. */
BQ_EXPORT const BQTree* BQTreeGetNextSibling(const BQTree* tree);

/** The number of children; 0 for null. Takes time in proportion to it. */
BQ_EXPORT BQIndex BQTreeGetChildCount(const BQTree* tree);

/** Calls a function with each child in document order. */
BQ_EXPORT void BQTreeApplyFunctionToChildren(const BQTree* tree,
                                             void (*function)(const void* child, void* context),
                                             void* context);

BQ_EXTERN_C_END

#endif
