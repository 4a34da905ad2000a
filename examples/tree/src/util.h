int twice(int number);
