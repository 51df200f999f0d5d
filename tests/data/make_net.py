#!/usr/bin/env python3
"""Emit an ibsim net file (ibnetdiscover-like) of a 3-level (pods) fat tree.
usage: make_net.py PODS LEAVES_PER_POD MIDS_PER_POD ROOTS_PER_GROUP HOSTS_PER_LEAF [--defect KIND ...]
Root group i (ROOTS_PER_GROUP switches) serves mid i of every pod.
"""
import sys
import os
SPEED=os.environ.get('SPEED','4xHDR')
a=[int(x) for x in sys.argv[1:6]]; P,L,M,R,H=a
defects=sys.argv[6:]
SW={};nodes=[]; links=[]
nxt={}
def port(n):
    nxt[n]=nxt.get(n,0)+1; return nxt[n]
def add(kind,name): nodes.append((kind,name))
def link(x,y): links.append((x,port(x),y,port(y)))
# the first node of the file is the point where clients attach: make it a host
for p in range(P):
    for l in range(L):
        for h in range(H): add('Hca',f'h-p{p}l{l}n{h}')
for p in range(P):
    for l in range(L): add('Switch',f'leaf-p{p}l{l}')
for p in range(P):
    for m in range(M): add('Switch',f'mid-p{p}m{m}')
for m in range(M):
    for r in range(R): add('Switch',f'root-g{m}r{r}')
for p in range(P):
    for l in range(L):
        for h in range(H): link(f'leaf-p{p}l{l}',f'h-p{p}l{l}n{h}')
        for m in range(M):
            if 'missing' in defects and (p,l,m)==(0,0,0): continue
            link(f'leaf-p{p}l{l}',f'mid-p{p}m{m}')
    for m in range(M):
        for r in range(R): link(f'mid-p{p}m{m}',f'root-g{m}r{r}')
if 'intra' in defects: link('leaf-p0l0','leaf-p0l1')
if 'cross' in defects: link('leaf-p0l1','mid-p1m0')
if 'midmid' in defects: link('mid-p0m0','mid-p1m0')
pm={}
for x,i,y,j in links: pm.setdefault(x,[]).append((i,y,j)); pm.setdefault(y,[]).append((j,x,i))
radix=max(nxt[n] for k,n in nodes if k=='Switch')
out=[]
for k,n in nodes:
    out.append(f'{k}\t{radix if k=="Switch" else 1} "{n}"')
    # the trailing "# ... lid N 4xHDR" is what ibsim >= 0.9 parses for width and speed (else it warns and uses 4xSDR)
    for i,y,j in sorted(pm.get(n,[])):
        out.append(f'[{i}]\t"{y}"[{j}]\t# ' + (f'"{y}" lid 0 {SPEED}' if k=="Switch" else f'lid 0 lmc 0 "{y}" lid 0 {SPEED}'))
    out.append('')
sys.stdout.write('\n'.join(out)+'\n')
sys.stderr.write(f'hosts={P*L*H} leaves={P*L} mids={P*M} roots={M*R} switches={P*L+P*M+M*R} links={len(links)} radix={radix}\n')
