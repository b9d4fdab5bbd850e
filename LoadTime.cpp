// The one place where OrreryCoreVariables does work at load time. The order of initialisers across source
// files isn't defined, so every registration that has to happen before main() stands here, in its order.

