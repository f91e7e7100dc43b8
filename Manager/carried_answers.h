#pragma once

class QObject;
class ThProxy;

// What an answer of the worker tells of a card is copied into the queue of the receiver's thread. From now on the last
// such copy is overwritten, once all slots of `receiver` that were connected before have had the answer.
void wipeCarriedAnswers(ThProxy *worker, QObject *receiver);
