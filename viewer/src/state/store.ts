// A state with subscriptions: listeners are told once, behind all changes of a turn.
export class Store<State extends object> {
  private changed = new Set<keyof State>();
  private readonly listeners: { keys: (keyof State)[]; tell: () => void }[] = [];

  constructor(private state: State) {}

  get now(): Readonly<State> {
    return this.state;
  }

  set(change: Partial<State>): void {
    const keys = (Object.keys(change) as (keyof State)[]).filter(key => this.state[key] !== change[key]);
    if (keys.length === 0) return;
    this.state = { ...this.state, ...change };
    if (this.changed.size === 0) queueMicrotask(() => this.tellAll());
    keys.forEach(key => this.changed.add(key));
  }

  // `tell` is called behind each change of one of the keys, and once now.
  watch(keys: (keyof State)[], tell: () => void): void {
    this.listeners.push({ keys, tell });
    tell();
  }

  private tellAll(): void {
    const changed = this.changed;
    this.changed = new Set();
    for (const listener of this.listeners) if (listener.keys.some(key => changed.has(key))) listener.tell();
  }
}
