// placeholder
int vantori_placeholder_symbol = 0;
