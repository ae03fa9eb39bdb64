/* The floors: what the plug-in's figures are divided by. Written in C, as barely as the work can be done. */
#ifndef ORB_BENCH_FLOORS_H
#define ORB_BENCH_FLOORS_H

#include "orb/vectorix.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The pieces of a plot, known beforehand. The plot repeats its block; behind the block lie as many bytes of the next one as
 * a piece may have. */
typedef struct bench_Pieces {
    const char *block;
    size_t blockSize;
    const uint8_t *sizes; /* of each piece */
    size_t count;
} bench_Pieces;

/* Opens the port; for each piece asks for the modem lines, writes, drains; closes. 0, or -1 with errno. */
int bench_writePieces(const char *port, const bench_Pieces *pieces);

/* Takes the record by value, makes the three copies, returns it by value. */
ORB_ServiceRecord bench_copyRecord(ORB_ServiceRecord record);

#ifdef __cplusplus
}
#endif
#endif
