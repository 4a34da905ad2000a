#define NAME "answer"
