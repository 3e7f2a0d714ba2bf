say 1
  /* outer /* inner */
say 2
