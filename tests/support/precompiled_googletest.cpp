// Stands for the header that is compiled along with it; there is nothing of its own.
